#ifndef PLATFORM_MESSAGES_CATALOGUE_H
#define PLATFORM_MESSAGES_CATALOGUE_H

#include <span>
#include <string_view>

// The message catalogue: every text that the system shows a person, as data.
struct CatalogueMessage {
    int id;
    // The text, with each parameter written as its name ("_field_") at the place of its value.
    const char16_t* text;
    // For the operator: what happened and what to do about it.
    const char* explanation;
};

// All messages, by ascending id.
std::span<const CatalogueMessage> MessageCatalogue();

// The message with this id, or null.
const CatalogueMessage* FindCatalogueMessage(int id);

// The first parameter name in the text: a whole word of small letters and underscores that begins
// and ends with an underscore. The result is a part of `text`; it is empty when there is none.
std::u16string_view NextCatalogueParameter(std::u16string_view text);

#endif
