#include "zelm/core/exceptions.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

// What this folder throws beside the exceptions of zelm/core, as handlers see it.

namespace Zelm::MetaData {
namespace {

using ScanException = ReaderJson::ScanException;
using ParseException = ReaderJson::ParseException;

void castABooleanToANumber()
{
    Element const element = Trivial_T<bool>(true);
    element.CastTo<Trivial_T<double>>();
}

void readObject(std::string const& text)
{
    std::istringstream stream(text);
    Object object;
    ReaderJson::Read(object, stream);
}

void scanWhatIsNoToken()
{
    readObject("{x");
}

void parseWhatIsNoMember()
{
    readObject("{1}");
}

/// Handlers for E and for the roots of the family catch what the call throws.
template <class E> void expectCaughtByHandlersFor(void (*call)())
{
    EXPECT_THROW(call(), E);
    EXPECT_THROW(call(), Exception);
    EXPECT_THROW(call(), Zelm::Exception::Base);
    EXPECT_THROW(call(), std::runtime_error);
}

TEST(MetaDataExceptions, areCaughtAsBaseAndAsRuntimeError)
{
    expectCaughtByHandlersFor<Exception>(castABooleanToANumber);
    expectCaughtByHandlersFor<ScanException>(scanWhatIsNoToken);
    expectCaughtByHandlersFor<ParseException>(parseWhatIsNoMember);
}

TEST(MetaDataExceptions, areNotCaughtByHandlersForMisuse)
{
    for (auto const call : {castABooleanToANumber, scanWhatIsNoToken, parseWhatIsNoMember}) {
        std::string caughtAs;
        try {
            call();
        } catch (Zelm::Exception::InvalidOperation const&) {
            caughtAs = "InvalidOperation";
        } catch (Zelm::Exception::InvalidParameter const&) {
            caughtAs = "InvalidParameter";
        } catch (Zelm::Exception::UnknownException const&) {
            caughtAs = "UnknownException";
        } catch (Exception const&) {
            caughtAs = "MetaData::Exception";
        }
        EXPECT_EQ(caughtAs, "MetaData::Exception");
    }
}

TEST(MetaDataExceptions, tellFailuresOfTheScannerAndOfTheParserApart)
{
    EXPECT_FALSE((std::is_base_of_v<ScanException, ParseException>));
    EXPECT_FALSE((std::is_base_of_v<ParseException, ScanException>));
    EXPECT_TRUE((std::is_convertible_v<ScanException*, Exception*>));
    EXPECT_TRUE((std::is_convertible_v<ParseException*, Exception*>));
    EXPECT_TRUE((std::is_convertible_v<Exception*, Zelm::Exception::Base*>));
}

TEST(MetaDataExceptions, keepTheirTextUnchanged)
{
    for (std::string const text : {"x", "", "Invalid Parameter: x"}) {
        Exception const original(text);
        Exception const copy(original);
        EXPECT_EQ(original.what(), text);
        EXPECT_EQ(copy.what(), text);
    }
}

TEST(MetaDataExceptions, areCopiedWithoutThrowingAnything)
{
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<Exception>);
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<ScanException>);
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<ParseException>);
}

TEST(MetaDataExceptions, keepTheirTextAndPlacesInACopy)
{
    ScanException const scan("scan", {1, 2, 3});
    ParseException const parse("parse", {1, 2, 3}, {4, 5, 6});
    auto const scanCopy = scan;
    auto const parseCopy = parse;

    EXPECT_STREQ(scanCopy.what(), "scan");
    EXPECT_EQ(scanCopy.errorPosition().documentOffset, 3u);
    EXPECT_STREQ(parseCopy.what(), "parse");
    EXPECT_EQ(parseCopy.tokenStart().lineOffset, 2u);
    EXPECT_EQ(parseCopy.tokenEnd().line, 4u);
}

}  // namespace
}  // namespace Zelm::MetaData
