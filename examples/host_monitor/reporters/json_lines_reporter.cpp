#include "json_lines_reporter.h"

#include "zelm/core/exceptions.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/writer_json.h"

#include <sstream>

namespace HostMonitor {

namespace {

std::string parsePath(std::vector<std::string> const& arguments)
{
    if (arguments.size() != 1 || arguments.front().empty())
        throw Zelm::Exception::InvalidParameter("JsonLinesReporter takes one argument, a file or -");
    return arguments.front();
}

}  // namespace

std::string toJsonLine(Reading const& reading)
{
    Zelm::MetaData::Element element;
    reading.copyToMetaData(element);
    std::ostringstream line;
    Zelm::MetaData::WriterJson::Write(element, line, false);
    line << '\n';
    return line.str();
}

JsonLinesReporter::JsonLinesReporter(std::vector<std::string> const& arguments) : path_(parsePath(arguments)) {}

void JsonLinesReporter::startLifeCycle()
{
    output_.emplace(path_);
}

void JsonLinesReporter::endLifeCycle()
{
    output_.reset();
}

void JsonLinesReporter::report(Sample const& sample)
{
    if (!output_)
        throw Zelm::Exception::InvalidOperation("JsonLinesReporter isn't started");
    for (auto const& reading : sample)
        output_->write(toJsonLine(*reading));
}

}  // namespace HostMonitor
