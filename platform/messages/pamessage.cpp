#include "platform/messages/pamessage.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/foundation/cexception.h"
#include "platform/messages/catalogue.h"

namespace {

using Parameters = std::vector<std::pair<Obx_String, Obx_String>>;

template <typename AnyParameters>
auto* FindValue(AnyParameters& parameters, std::u16string_view name) {
    const auto found =
        std::find_if(parameters.begin(), parameters.end(),
                     [name](const auto& parameter) { return parameter.first.View() == name; });
    return found == parameters.end() ? nullptr : &found->second;
}

std::size_t EndOf(std::u16string_view part, std::u16string_view text) {
    return static_cast<std::size_t>(part.data() - text.data()) + part.size();
}

#ifdef NDEBUG
void CheckParameter(int /*id*/, const Obx_String& /*name*/) {}
#else
bool HasParameter(std::u16string_view text, std::u16string_view name) {
    std::u16string_view parameter = NextCatalogueParameter(text);
    while (!parameter.empty() && parameter != name) {
        text = text.substr(EndOf(parameter, text));
        parameter = NextCatalogueParameter(text);
    }
    return !parameter.empty();
}

// A message that the catalogue lacks takes every parameter, since FullMsg lists them.
void CheckParameter(int id, const Obx_String& name) {
    const CatalogueMessage* message = FindCatalogueMessage(id);
    if (id == 0 || (message != nullptr && !HasParameter(message->text, name.View()))) {
        Obx_String text;
        text.Format(u"Message %d has no parameter \"%s\"", id, name);
        throw new CException(text);
    }
}
#endif

// Walks the catalogue's text only, so that a value which looks like a parameter stays as it is.
Obx_String WithValues(std::u16string_view text, const Parameters& parameters) {
    std::u16string out;
    for (;;) {
        const std::u16string_view name = NextCatalogueParameter(text);
        if (name.empty()) {
            out += text;
            return Obx_String(std::move(out));
        }
        const std::size_t end = EndOf(name, text);
        const Obx_String* value = FindValue(parameters, name);
        out += text.substr(0, end - name.size());
        out += value != nullptr ? value->View() : name;
        text = text.substr(end);
    }
}

Obx_String WithoutText(int id, const Parameters& parameters) {
    Obx_String out;
    out.Format(u"Message %d, which the catalogue does not have", id);
    const char16_t* separator = u": ";
    for (const auto& [name, value] : parameters) {
        out += separator;
        out += name + u" = \"" + value + u"\"";
        separator = u", ";
    }
    return out;
}

}  // namespace

void PaMessage::SetParam(const Obx_String& name, const Obx_String& value) {
    CheckParameter(m_id, name);
    if (Obx_String* known = FindValue(m_parameters, name.View())) {
        *known = value;
    } else {
        m_parameters.emplace_back(name, value);
    }
}

Obx_String PaMessage::FullMsg() const {
    if (m_id == 0) {
        return {};
    }
    const CatalogueMessage* message = FindCatalogueMessage(m_id);
    return message != nullptr ? WithValues(message->text, m_parameters)
                              : WithoutText(m_id, m_parameters);
}
