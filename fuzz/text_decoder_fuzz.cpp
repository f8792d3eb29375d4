#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <string>
#include <string_view>

#include "input.h"
#include "tool/io/decoding_marks.h"
#include "tool/io/source_error.h"
#include "tool/io/text_decoder.h"

namespace {

using fuzz::Expect;

void Append(UChar32 character, std::string& out) {
    std::uint8_t bytes[U8_MAX_LENGTH];
    std::int32_t size = 0;
    U8_APPEND_UNSAFE(bytes, size, character);
    out.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

// `bytes` as ICU reads UTF-8, with a mark for each byte that is no text.
std::string DecodeUtf8(std::string_view bytes) {
    const auto* units = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto size = static_cast<std::int32_t>(bytes.size());
    std::string text;
    for (std::int32_t at = 0; at < size;) {
        const std::int32_t begin = at;
        UChar32 character = 0;
        U8_NEXT(units, at, size, character);
        if (character > 0) {
            Append(character, text);
        } else {
            text.append(static_cast<std::size_t>(at - begin),
                        static_cast<char>(character == 0 ? tool::NulMark : tool::ByteMark));
        }
    }
    return text;
}

// `bytes` as ICU reads UTF-16, with a mark for each unit that is no text.
std::string DecodeUtf16(std::string_view bytes, bool bigEndian) {
    std::u16string units;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const auto first = static_cast<std::uint8_t>(bytes[at]);
        const auto second = static_cast<std::uint8_t>(bytes[at + 1]);
        units += static_cast<char16_t>(bigEndian ? first << 8U | second : second << 8U | first);
    }
    std::string text;
    for (std::size_t at = 0; at < units.size();) {
        UChar32 character = 0;
        U16_NEXT(units.data(), at, units.size(), character);
        if (character == 0) {
            text += static_cast<char>(tool::NulMark);
        } else if (U_IS_SURROGATE(character)) {
            text += static_cast<char>(tool::SurrogateMark);
        } else {
            Append(character, text);
        }
    }
    if (bytes.size() % 2 != 0) {
        text += static_cast<char>(tool::OddByteMark);
    }
    return text;
}

void Compare(std::string_view bytes, std::size_t chunk) {
    tool::TextBytes source(bytes);
    tool::TextDecoder decoder(source, chunk);
    std::string text;
    while (decoder.Read(text)) {
    }
    const std::string_view body = bytes.substr(decoder.TextBegin());
    const bool bigEndian = decoder.SourceEncoding() == tool::Encoding::Utf16BigEndian;
    Expect(
        text == (decoder.SourceEncoding() == tool::Encoding::Utf8 ? DecodeUtf8(body)
                                                                  : DecodeUtf16(body, bigEndian)),
        "the text is the one that ICU reads");
    Expect(decoder.Marked() == (tool::FindDecodingMark(text) != text.npos), "marks are reported");
    Expect(decoder.BytesRead() == bytes.size(), "every byte was read");
    const std::uint64_t oddByte = text.ends_with(static_cast<char>(tool::OddByteMark)) ? 1 : 0;
    Expect(decoder.SourceBytes(text) - oddByte == body.size(), "places in the source are right");
    const std::string mended = tool::ReplaceDecodingMarks(text);
    Expect(tool::FindDecodingMark(mended) == mended.npos && DecodeUtf8(mended) == mended,
           "without its marks the text is valid UTF-8");
}

}  // namespace

// Whatever the chunks are, the decoder reads as ICU does.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t chunk = std::size_t{1} + input.TakeChoice();
    try {
        Compare(input.Text(), chunk);
    } catch (const tool::SourceError& error) {
        Expect(std::string_view(error.what()).find("packets are read in UTF-8 or UTF-16 only") !=
                   std::string_view::npos,
               "only another encoding is refused");
    }
    return 0;
}
