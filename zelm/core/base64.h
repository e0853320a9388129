/// @file
/// Bytes as text and back: the standard Base64 of RFC 4648, section 4, with "=" as padding and no line breaks.
///
///     std::string text;
///     encodeBase64(bytes.data(), bytes.size(), text);
///
///     std::vector<unsigned char> decoded(decodeSize(text));
///     decodeBase64(text, decoded.data(), decoded.size());
///
/// The caller owns and sizes the buffer. Reading is strict: a blank or a line end is an invalid character like any
/// other byte outside the alphabet.
///
/// Thread-safety: no state. Any thread may call these, as long as nobody writes the text or the buffer meanwhile.
#pragma once

#include "zelm/core/export.h"

#include <string>

namespace Zelm {

/// Appends the Base64 text of `size` bytes to `text`. Of no bytes at all there is nothing to append: `text` is made
/// empty then, whatever it held, and `data` may be null.
///
/// Returns whether the length of the whole of `text` is a multiple of 4. It always is if `text` was empty before;
/// otherwise false says that what stood there didn't end at a group, and the encoding behind it is right all the same.
ZELM_EXPORT bool encodeBase64(unsigned char const* data, unsigned long size, std::string& text);

/// The number of bytes that `text` stands for: three for each group of four characters, less one for each "=" at the
/// end, however many there are. It looks at nothing else, so a size says nothing about the rest of the text.
///
/// Throws Exception::InvalidParameter if the length isn't a multiple of 4.
ZELM_EXPORT unsigned long decodeSize(std::string const& text);

/// Decodes `text` into `buffer`, which is `size` bytes long; never writes behind them. Returns true when all is
/// decoded, and false, with nothing written, if `size` isn't decodeSize(text).
///
/// Throws Exception::InvalidParameter for a length that isn't a multiple of 4, for a character outside the alphabet
/// ("=" counts as one wherever it can't be padding: before the last group and at its first two places), and for a last
/// group whose third character is "=" while its fourth isn't. There is no way back: what was decoded before the fault
/// has been written, so treat the buffer as undefined after an exception.
ZELM_EXPORT bool decodeBase64(std::string const& text, unsigned char* buffer, unsigned long size);

}  // namespace Zelm
