#include "platform/xmlstream/token_queue.h"

#include "platform/xmlstream/ixmlstream.h"

namespace {

// The memory of a text is kept for the next one, unless it is huge.
constexpr std::size_t kMostRoomKept = std::size_t{64} * 1024;

std::size_t CountPairs(const char** attributes) {
    std::size_t texts = 0;
    while (attributes[texts] != nullptr) {
        ++texts;
    }
    return texts / 2;
}

}  // namespace

void TokenQueue::AddStartTag(std::string_view name, const char** attributes) {
    XmlSTag::Attributes pairs;
    pairs.reserve(CountPairs(attributes));
    for (const char** pair = attributes; *pair != nullptr; pair += 2) {
        pairs.emplace_back(Obx_String::FromUtf8(pair[0]), Obx_String::FromUtf8(pair[1]));
    }
    AddStartTag(name, std::move(pairs));
}

void TokenQueue::AddStartTag(std::string_view name, std::string_view attribute,
                             std::string_view value) {
    XmlSTag::Attributes pairs;
    if (!attribute.empty()) {
        pairs.emplace_back(Obx_String::FromUtf8(attribute), Obx_String::FromUtf8(value));
    }
    AddStartTag(name, std::move(pairs));
}

void TokenQueue::AddStartTag(std::string_view name, XmlSTag::Attributes attributes) {
    FlushText(false);
    m_openNames += name;
    m_openNameEnds.push_back(m_openNames.size());
    Add({IXmlStream::kStartTag, Obx_String::FromUtf8(name), std::move(attributes)});
    m_textFollowsStartTag = true;
}

void TokenQueue::AddEndTag(std::string_view name) {
    FlushText(m_textFollowsStartTag);
    m_openNames.resize(m_openNames.size() - OpenName().size());
    m_openNameEnds.pop_back();
    Add({IXmlStream::kEndTag, Obx_String::FromUtf8(name), {}});
    m_textFollowsStartTag = false;
}

void TokenQueue::AddText(std::string_view text) {
    m_text += text;
    m_textHasMoreThanSpace =
        m_textHasMoreThanSpace || text.find_first_not_of(" \t\r\n") != std::string_view::npos;
}

void TokenQueue::Finish() {
    FlushText(false);
}

void TokenQueue::Pop() {
    ++m_next;
    if (IsEmpty()) {
        m_tokens.clear();
        m_next = 0;
    }
}

std::string_view TokenQueue::OpenName() const {
    const std::size_t outer = Depth() < 2 ? 0 : m_openNameEnds[Depth() - 2];
    return std::string_view(m_openNames).substr(outer);
}

// Blanks between two fields are layout, but blanks that are all an element holds are its value.
void TokenQueue::FlushText(bool keepWhiteSpace) {
    if (!m_text.empty() && (m_textHasMoreThanSpace || keepWhiteSpace)) {
        Add({IXmlStream::kCharData, Obx_String::FromUtf8(m_text), {}});
    }
    m_text.clear();
    if (m_text.capacity() > kMostRoomKept) {
        std::string().swap(m_text);
    }
    m_textHasMoreThanSpace = false;
}

void TokenQueue::Add(Token token) {
    m_tokens.push_back(std::move(token));
}
