/// @file
/// A matcher for "this call throws exactly this class with exactly this text".
///
///     EXPECT_THAT([&] { view["x"]; }, throwsText<Exception::InvalidOperation>("Looking for x in ..."));
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace Zelm::Testing {

/// Exactly `E` on purpose: a class derived from it doesn't match, since callers tell the classes apart.
template <class E> class ThrowsTextMatcher {
public:
    explicit ThrowsTextMatcher(std::string text) : text_(std::move(text)) {}

    template <class F> bool MatchAndExplain(F&& call, ::testing::MatchResultListener* listener) const
    {
        try {
            call();
        } catch (std::exception const& error) {
            *listener << "which throws " << typeid(error).name() << " with the text \"" << error.what() << '"';
            return typeid(error) == typeid(E) && error.what() == text_;
        } catch (...) {
            *listener << "which throws something that is no std::exception";
            return false;
        }
        *listener << "which returns normally";
        return false;
    }

    void DescribeTo(std::ostream* os) const
    {
        *os << "throws " << typeid(E).name() << " with the text \"" << text_ << '"';
    }
    void DescribeNegationTo(std::ostream* os) const
    {
        *os << "doesn't throw " << typeid(E).name() << " with that text";
    }

private:
    std::string text_;
};

template <class E>::testing::PolymorphicMatcher<ThrowsTextMatcher<E>> throwsText(std::string text)
{
    return ::testing::MakePolymorphicMatcher(ThrowsTextMatcher<E>(std::move(text)));
}

}  // namespace Zelm::Testing
