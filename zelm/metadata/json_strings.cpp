// The two functions of Zelm::Json, declared in reader_json.h: they join its fast path to the writer.
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <sstream>

namespace Zelm::Json {

std::string metaDatatoJsonString(MetaData::Object const& object)
{
    std::stringstream stream;
    stream.exceptions(std::ios::badbit);  // otherwise a lack of memory cuts the text off without a word
    MetaData::WriterJson::Write(object, stream, true);
    return stream.str();
}

MetaData::Object jsonStringtoMetaData(std::string const& text)
{
    MetaData::Object object;
    MetaData::ReaderJson::Read(object, text);
    return object;
}

}  // namespace Zelm::Json
