#include "tool/packet/record_elements.h"

#include <expat.h>

#include <algorithm>

#include "tool/packet/xml_text.h"

namespace tool {

namespace {

// The attribute "name"; a field without one has the empty name for the importer as well.
std::string_view NameIn(const char** attributes) {
    for (const char** pair = attributes; *pair != nullptr; pair += 2) {
        if (std::string_view(pair[0]) == "name") {
            return pair[1];
        }
    }
    return {};
}

}  // namespace

// The handlers that expat calls.
struct RecordElements::Callbacks {
    static RecordElements& Self(void* elements) { return *static_cast<RecordElements*>(elements); }

    static void Start(void* elements, const char* /*name*/, const char** attributes) {
        RecordElements& self = Self(elements);
        self.m_parser.Guard([&] { self.OpenElement(attributes); });
    }

    static void End(void* elements, const char* /*name*/) {
        RecordElements& self = Self(elements);
        self.m_parser.Guard([&] { self.CloseElement(); });
    }

    static void Text(void* elements, const char* text, int length) {
        RecordElements& self = Self(elements);
        self.m_parser.Guard([&] { self.AddText({text, static_cast<std::size_t>(length)}); });
    }
};

void RecordElements::Read(std::string_view record) {
    m_record = record;
    m_count = 0;
    m_open.clear();
    m_inRecord = m_inHead = m_looseGoesOn = false;
    m_stop = StopCause::None;
    m_parser.StartAnew();
    XML_SetUserData(m_parser.Get(), this);
    XML_SetElementHandler(m_parser.Get(), Callbacks::Start, Callbacks::End);
    XML_SetCharacterDataHandler(m_parser.Get(), Callbacks::Text);
    if (!m_parser.Parse(record, true)) {
        const std::size_t offset = std::min(m_parser.Offset(), record.size());
        StopAt(offset, StopCause::Broken);
        m_open.clear();
        NewPart(RecordPart::Kind::Broken, offset);
    }
}

RecordPart& RecordElements::NewPart(RecordPart::Kind kind, std::size_t offset) {
    if (m_count == m_parts.size()) {
        m_parts.emplace_back();
    }
    RecordPart& part = m_parts[m_count++];
    part.kind = kind;
    part.name.clear();
    part.text.clear();
    part.offset = offset;
    part.parent = m_open.empty() ? RecordPart::kNone : m_open.back();
    part.holdsElement = false;
    part.read = false;
    return part;
}

void RecordElements::StopAt(std::size_t offset, StopCause cause) {
    if (m_stop == StopCause::None) {
        m_stop = cause;
        m_stopOffset = offset;
    }
}

void RecordElements::OpenElement(const char** attributes) {
    m_looseGoesOn = false;
    if (!m_inRecord) {
        m_inRecord = true;
        return;
    }
    if (!m_open.empty()) {
        m_parts[m_open.back()].holdsElement = true;
    }
    RecordPart& field = NewPart(RecordPart::Kind::Field, m_parser.Offset());
    field.name = NameIn(attributes);
    field.read = m_stop == StopCause::None;
    m_open.push_back(m_count - 1);
    m_inHead = true;
}

void RecordElements::CloseElement() {
    m_looseGoesOn = false;
    if (m_open.empty()) {
        return;
    }
    if (!m_inHead) {
        StopAt(m_parser.Offset(), StopCause::EndTag);
    }
    m_open.pop_back();
    m_inHead = false;
}

void RecordElements::AddText(std::string_view text) {
    if (!m_open.empty() && !m_parts[m_open.back()].holdsElement) {
        m_parts[m_open.back()].text += text;
    } else {
        AddLooseText(text);
    }
}

void RecordElements::AddLooseText(std::string_view text) {
    const std::size_t offset = m_parser.Offset();
    // A reference is text even if what it stands for is blank.
    const std::size_t first = m_record[offset] == '&' ? 0 : text.find_first_not_of(kXmlBlanks);
    if (!m_looseGoesOn && first == std::string_view::npos) {
        return;
    }
    if (!m_looseGoesOn) {
        StopAt(offset + first, StopCause::Text);
        NewPart(RecordPart::Kind::Text, offset + first);
        m_looseGoesOn = true;
        text.remove_prefix(first);
    }
    m_parts[m_count - 1].text += text;
}

}  // namespace tool
