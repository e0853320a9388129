#include "table_reporter.h"

#include "sample_text.h"

#include "zelm/core/exceptions.h"

namespace HostMonitor {

TableReporter::TableReporter(std::vector<std::string> const& arguments)
{
    if (!arguments.empty())
        throw Zelm::Exception::InvalidParameter("TableReporter takes no arguments");
}

void TableReporter::report(Sample const& sample)
{
    screen_.show(sampleLines(sample, screen_.width()));
}

}  // namespace HostMonitor
