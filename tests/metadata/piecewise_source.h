/// @file
/// A text as a stream's buffer that hands it out as a file or a pipe might, in pieces of any size, and tells how it was
/// asked.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>

namespace Zelm::MetaData::Testing {

constexpr std::size_t wholeText = std::numeric_limits<std::size_t>::max();

/// Hands out its text in pieces of the given size, each when asked for it; with size 0 byte by byte, without a buffer.
/// Where the text ends it ends or throws.
class PiecewiseSource : public std::streambuf {
public:
    PiecewiseSource(std::string text, std::size_t pieceSize, bool throwsAtTheEnd = false)
        : text_(std::move(text)), pieceSize_(pieceSize), throws_(throwsAtTheEnd)
    {
    }

    std::size_t taken() const { return handedOut_ - static_cast<std::size_t>(egptr() - gptr()); }
    std::size_t handedOut() const { return handedOut_; }
    int asksAtTheEnd() const { return asksAtTheEnd_; }

protected:
    int_type underflow() override
    {
        if (handedOut_ == text_.size())
            return end();
        if (pieceSize_ == 0)
            return traits_type::to_int_type(text_[handedOut_]);
        auto const size = std::min(pieceSize_, text_.size() - handedOut_);
        setg(text_.data() + handedOut_, text_.data() + handedOut_, text_.data() + handedOut_ + size);
        handedOut_ += size;
        return traits_type::to_int_type(*gptr());
    }

    int_type uflow() override
    {
        if (pieceSize_ != 0)
            return std::streambuf::uflow();
        if (handedOut_ == text_.size())
            return end();
        return traits_type::to_int_type(text_[handedOut_++]);
    }

private:
    int_type end()
    {
        ++asksAtTheEnd_;
        if (throws_)
            throw std::runtime_error("the source is broken");
        return traits_type::eof();
    }

    std::string text_;
    std::size_t const pieceSize_;
    bool const throws_;
    std::size_t handedOut_ = 0;
    int asksAtTheEnd_ = 0;
};

}  // namespace Zelm::MetaData::Testing
