#include "plain/metadata/plain_writer.h"

#include <ostream>
#include <string>

namespace Zelm::Benchmarks::Plain {

using namespace MetaData;

namespace {

class Writer : public ConstVisitor {
public:
    explicit Writer(std::ostream& stream) : stream_(stream) {}

    void Visit(Array const& array) override
    {
        if (array.empty()) {
            stream_ << "[]";
            return;
        }
        stream_ << "[" << endOfLine();
        ++level_;
        for (auto element = array.begin(); element != array.end();) {
            stream_ << indentation();
            element->Accept(*this);
            if (++element != array.end())
                stream_ << ",";
            stream_ << endOfLine();
        }
        --level_;
        stream_ << indentation() << "]";
    }

    void Visit(Object const& object) override
    {
        if (object.empty()) {
            stream_ << "{}";
            return;
        }
        stream_ << "{" << endOfLine();
        ++level_;
        for (auto member = object.begin(); member != object.end();) {
            stream_ << indentation();
            write(member->name());
            stream_ << " : ";
            member->element().Accept(*this);
            if (++member != object.end())
                stream_ << "," << endOfLine();
        }
        stream_ << endOfLine();
        --level_;
        stream_ << indentation() << "}";
    }

    void Visit(Trivial_T<double> const& value) override
    {
        stream_.precision(20);
        stream_ << static_cast<double const&>(value);
    }
    void Visit(Trivial_T<long> const& value) override { stream_ << static_cast<long const&>(value); }
    void Visit(Trivial_T<bool> const& value) override { stream_ << (value ? "true" : "false"); }
    void Visit(Null const&) override { stream_ << "null"; }
    void Visit(Trivial_T<std::string> const& value) override { write(value); }

private:
    void write(std::string const& text)
    {
        stream_.put('"');
        for (char const c : text)
            switch (c) {
            case '\b':
                stream_ << "\\b";
                break;
            case '\t':
                stream_ << "\\t";
                break;
            case '\n':
                stream_ << "\\n";
                break;
            case '\f':
                stream_ << "\\f";
                break;
            case '\r':
                stream_ << "\\r";
                break;
            case '"':
                stream_ << "\\\"";
                break;
            case '\\':
                stream_ << "\\\\";
                break;
            default:
                stream_.put(c);
            }
        stream_.put('"');
    }

    static std::string const& endOfLine()
    {
        static std::string const lineFeed = "\n";
        return lineFeed;
    }
    std::string const& indentation()
    {
        indentText_.assign(level_, '\t');
        return indentText_;
    }

    std::ostream& stream_;
    std::size_t level_ = 0;
    std::string indentText_;
};

}  // namespace

void writePretty(Object const& object, std::ostream& stream)
{
    Writer writer(stream);
    static_cast<ConstVisitor&>(writer).Visit(object);
    stream.flush();
}

}  // namespace Zelm::Benchmarks::Plain
