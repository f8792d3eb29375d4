#include "tool/io/charset_decoder.h"

#include <fmt/format.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "tool/io/decoding_marks.h"
#include "tool/io/source_error.h"
#include "tool/io/text_units.h"

namespace tool {

namespace {

using namespace std::string_view_literals;

// As much as the longest byte order mark.
constexpr std::size_t kHead = 4;

struct ByteOrderMark {
    std::string_view bytes;
    const char* charset;
};

// That of UTF-32 begins as that of UTF-16 does.
constexpr std::array<ByteOrderMark, 5> kByteOrderMarks = {{{"\xEF\xBB\xBF"sv, "UTF-8"},
                                                           {"\xFF\xFE\0\0"sv, "UTF-32LE"},
                                                           {"\0\0\xFE\xFF"sv, "UTF-32BE"},
                                                           {"\xFF\xFE"sv, "UTF-16LE"},
                                                           {"\xFE\xFF"sv, "UTF-16BE"}}};

// Stands in the UTF-16 text for what could not be converted, and becomes a mark in the UTF-8. It is
// half of a pair, so no text that was converted holds it alone.
constexpr UChar kNoText = 0xDC00;

void PutNoText(const void* /*context*/, UConverterToUnicodeArgs* arguments, const char* /*bytes*/,
               std::int32_t /*length*/, UConverterCallbackReason reason, UErrorCode* error) {
    if (reason <= UCNV_IRREGULAR) {
        *error = U_ZERO_ERROR;
        ucnv_cbToUWriteUChars(arguments, &kNoText, 1, 0, error);
    }
}

}  // namespace

// A converter of ICU.
class CharsetDecoder::Converter {
  public:
    explicit Converter(const std::string& charset) {
        UErrorCode error = U_ZERO_ERROR;
        m_converter = ucnv_open(charset.c_str(), &error);
        if (U_FAILURE(error)) {
            throw SourceError(
                fmt::format("there is no encoding called \"{}\"; those of other "
                            "programs are called windows-1252, ISO-8859-1, UTF-16",
                            charset));
        }
        ucnv_setToUCallBack(m_converter, PutNoText, nullptr, nullptr, nullptr, &error);
    }
    ~Converter() { ucnv_close(m_converter); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    void Append(std::string_view bytes, bool last, std::string& out, bool& marked) {
        const char* from = bytes.data();
        const char* const end = from + bytes.size();
        UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
        while (error == U_BUFFER_OVERFLOW_ERROR) {
            error = U_ZERO_ERROR;
            UChar* to = m_units.data();
            ucnv_toUnicode(m_converter, &to, m_units.data() + m_units.size(), &from, end, nullptr,
                           static_cast<UBool>(last), &error);
            TakeUnits(to, last && error != U_BUFFER_OVERFLOW_ERROR, out, marked);
        }
    }

  private:
    // Units reach UTF-8 through the decoder of UTF-16, which marks NUL and lone halves of pairs.
    void TakeUnits(const UChar* end, bool last, std::string& out, bool& marked) {
        m_rest.append(reinterpret_cast<const char*>(m_units.data()),
                      static_cast<std::size_t>(end - m_units.data()) * sizeof(UChar));
        constexpr bool bigEndian = U_IS_BIG_ENDIAN != 0;
        const std::size_t before = out.size();
        m_rest.erase(0, AppendUtf16(m_rest, bigEndian, last, out, marked));
        std::replace(out.begin() + static_cast<std::ptrdiff_t>(before), out.end(),
                     static_cast<char>(SurrogateMark), static_cast<char>(ByteMark));
    }

    UConverter* m_converter = nullptr;
    std::array<UChar, 4096> m_units{};
    std::string m_rest;
};

bool IsKnownCharset(const std::string& name) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(name.c_str(), &error);
    ucnv_close(converter);
    return U_SUCCESS(error);
}

bool IsUtf8Charset(const std::string& name) {
    return ucnv_compareNames(name.c_str(), "UTF-8") == 0;
}

CharsetDecoder::CharsetDecoder(ByteSource& source, const std::string& charset, std::size_t chunk)
    : m_source(source), m_chunk(chunk), m_charset(charset), m_buffer(chunk + kHead, '\0') {
    ReadHead();
    if (!IsUtf8Charset(m_charset)) {
        m_converter = std::make_unique<Converter>(m_charset);
    }
}

CharsetDecoder::~CharsetDecoder() = default;

void CharsetDecoder::ReadHead() {
    while (m_carry < kHead) {
        const std::size_t got = m_source.Read(m_buffer.data() + m_carry, kHead - m_carry);
        if (got == 0) {
            break;
        }
        m_carry += got;
    }
    m_bytesRead = m_carry;
    const std::string_view head(m_buffer.data(), m_carry);
    const auto* const mark =
        std::find_if(kByteOrderMarks.begin(), kByteOrderMarks.end(),
                     [&](const ByteOrderMark& known) { return head.starts_with(known.bytes); });
    if (mark != kByteOrderMarks.end()) {
        m_charset = mark->charset;
        m_carry -= mark->bytes.size();
        m_buffer.erase(0, mark->bytes.size());
        m_buffer.append(mark->bytes.size(), '\0');
    }
}

bool CharsetDecoder::Read(std::string& out) {
    if (m_ended) {
        return false;
    }
    const std::size_t got = m_source.Read(m_buffer.data() + m_carry, m_chunk);
    m_bytesRead += got;
    m_ended = got == 0;
    const std::size_t size = m_carry + got;
    const std::size_t used = Decode(size, out);
    m_carry = size - used;
    std::memmove(m_buffer.data(), m_buffer.data() + used, m_carry);
    return size > 0;
}

std::size_t CharsetDecoder::Decode(std::size_t size, std::string& out) {
    if (m_converter) {
        m_converter->Append(std::string_view(m_buffer).substr(0, size), m_ended, out, m_marked);
        return size;
    }
    const std::size_t used = MarkInvalidUtf8(m_buffer.data(), size, m_ended, m_marked);
    out.append(m_buffer, 0, used);
    return used;
}

}  // namespace tool
