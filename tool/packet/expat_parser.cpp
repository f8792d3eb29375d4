#include "tool/packet/expat_parser.h"

#include <expat.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

namespace tool {

namespace {

constexpr const char* kEncoding = "UTF-8";

}  // namespace

void ExpatParser::Free::operator()(XML_ParserStruct* parser) const noexcept {
    XML_ParserFree(parser);
}

ExpatParser::ExpatParser() : m_parser(XML_ParserCreate(kEncoding)) {
    if (!m_parser) {
        throw std::bad_alloc();
    }
}

void ExpatParser::StartAnew() {
    m_failure = nullptr;
    if (XML_ParserReset(m_parser.get(), kEncoding) == XML_FALSE) {
        throw std::bad_alloc();
    }
}

bool ExpatParser::Parse(std::string_view piece, bool last) {
    if (!std::in_range<int>(piece.size())) {
        throw std::length_error("an XML text that is too long to be read at once");
    }
    const XML_Status status =
        XML_Parse(m_parser.get(), piece.data(), static_cast<int>(piece.size()), last ? 1 : 0);
    if (const std::exception_ptr failure = std::exchange(m_failure, nullptr)) {
        std::rethrow_exception(failure);
    }
    return status != XML_STATUS_ERROR;
}

std::size_t ExpatParser::Offset() const {
    return static_cast<std::size_t>(
        std::max<XML_Index>(XML_GetCurrentByteIndex(m_parser.get()), 0));
}

std::size_t ExpatParser::Line() const {
    return static_cast<std::size_t>(XML_GetCurrentLineNumber(m_parser.get()));
}

void ExpatParser::Stop() noexcept {
    XML_StopParser(m_parser.get(), XML_FALSE);
}

}  // namespace tool
