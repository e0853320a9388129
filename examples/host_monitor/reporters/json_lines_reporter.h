/// @file
/// The component type "JsonLinesReporter": one reading a line, each a JSON object in compact form.
///
/// Argument: a file, which is appended to and made if it isn't there, or "-" for standard output. A relative path
/// counts from the current directory.
#pragma once

#include "host_monitor/reporter.h"
#include "output_file.h"

#include "zelm/components/component.h"

#include <optional>
#include <string>
#include <vector>

namespace HostMonitor {

/// The reading as one line of JSON, line feed included. The fields stand in the order of their names.
std::string toJsonLine(Reading const& reading);

/// Opens its file when it is started and closes it when it is ended.
class JsonLinesReporter final : public Zelm::Component_Base,
                                public Zelm::LifeCycle::PassiveInterface,
                                public ReporterInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit JsonLinesReporter(std::vector<std::string> const& arguments);

    void startLifeCycle() override;
    void endLifeCycle() override;
    /// Each line is written on its own, so a reader never waits for the rest of the sample.
    void report(Sample const& sample) override;

private:
    std::string const path_;
    std::optional<OutputFile> output_;  // there while this is started
};

}  // namespace HostMonitor
