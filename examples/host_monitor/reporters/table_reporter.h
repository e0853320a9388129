/// @file
/// The component type "TableReporter": shows each sample on standard output as aligned tables, in place of the last one
/// if that is a terminal, below it otherwise.
///
/// Arguments: none.
#pragma once

#include "host_monitor/reporter.h"
#include "output_file.h"
#include "screen.h"

#include "zelm/components/component.h"

#include <optional>
#include <string>
#include <vector>

namespace HostMonitor {

class TableReporter final : public Zelm::Component_Base, public ReporterInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter if there is an argument.
    explicit TableReporter(std::vector<std::string> const& arguments);

    void report(Sample const& sample) override;

private:
    OutputFile output_{"-"};
    Screen screen_{output_};
};

}  // namespace HostMonitor
