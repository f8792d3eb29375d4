#include "platform/xmlstream/token_queue.h"

#include "platform/xmlstream/ixmlstream.h"

namespace {

// The memory of a text is kept for the next one, unless it is huge.
constexpr std::size_t kMostRoomKept = std::size_t{64} * 1024;

constexpr std::string_view kWhiteSpace = " \t\r\n";

bool HasMoreThanSpace(std::string_view text) {
    return text.find_first_not_of(kWhiteSpace) != std::string_view::npos;
}

}  // namespace

void TokenQueue::AddStartTag(std::string_view name, const char** attributes) {
    XmlSTag::Attributes& pairs = BeginStartTag(name).attributes;
    pairs.clear();
    for (const char** pair = attributes; *pair != nullptr; pair += 2) {
        pairs.emplace_back(Obx_String::FromUtf8(pair[0]), Obx_String::FromUtf8(pair[1]));
    }
}

void TokenQueue::AddStartTag(std::string_view name, std::string_view attribute,
                             std::string_view value) {
    XmlSTag::Attributes& pairs = BeginStartTag(name).attributes;
    pairs.resize(attribute.empty() ? 0 : 1);
    if (!pairs.empty()) {
        pairs.front() = {Obx_String::FromUtf8(attribute), Obx_String::FromUtf8(value)};
    }
}

TokenQueue::Token& TokenQueue::BeginStartTag(std::string_view name) {
    FlushText(false);
    m_openNames += name;
    m_openNameEnds.push_back(m_openNames.size());
    m_textFollowsStartTag = true;
    return Add(IXmlStream::kStartTag, name);
}

void TokenQueue::AddEndTag(std::string_view name) {
    FlushText(m_textFollowsStartTag);
    m_openNames.resize(m_openNames.size() - OpenName().size());
    m_openNameEnds.pop_back();
    Add(IXmlStream::kEndTag, name);
    m_textFollowsStartTag = false;
}

void TokenQueue::AddText(std::string_view text) {
    m_text += text;
    m_textHasMoreThanSpace = m_textHasMoreThanSpace || HasMoreThanSpace(text);
}

void TokenQueue::AddWholeText(std::string_view text) {
    if (!m_text.empty()) {
        AddText(text);
    } else if (HasMoreThanSpace(text)) {
        Add(IXmlStream::kCharData, text);
    } else if (m_textFollowsStartTag) {
        // It is a token if an end tag follows.
        m_text = text;
    }
}

void TokenQueue::Finish() {
    FlushText(false);
}

std::string_view TokenQueue::OpenName() const {
    const std::size_t outer = Depth() < 2 ? 0 : m_openNameEnds[Depth() - 2];
    return std::string_view(m_openNames).substr(outer);
}

// Blanks between two fields are layout, but blanks that are all an element holds are its value.
void TokenQueue::FlushText(bool keepWhiteSpace) {
    if (m_text.empty()) {
        return;
    }
    if (m_textHasMoreThanSpace || keepWhiteSpace) {
        Add(IXmlStream::kCharData, m_text);
    }
    m_text.clear();
    if (m_text.capacity() > kMostRoomKept) {
        std::string().swap(m_text);
    }
    m_textHasMoreThanSpace = false;
}

TokenQueue::Token& TokenQueue::Add(int type, std::string_view text) {
    if (m_end == m_tokens.size()) {
        m_tokens.emplace_back();
    }
    Token& token = m_tokens[m_end];
    token.type = type;
    token.text = Obx_String::FromUtf8(text);
    ++m_end;
    return token;
}
