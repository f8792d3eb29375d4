#ifndef TOOL_GUARDED_GUARDED_TEXT_H
#define TOOL_GUARDED_GUARDED_TEXT_H

#include <string>
#include <string_view>

#include "platform/foundation/obx_string.h"

// Values that a packet cannot carry as they are: its rules decode "&lt;" whatever is written, split
// lists at commas, trim references and take the word BLANK for the empty value, and XML forbids
// control characters. In a guarded packet, other characters stand for those concerned: the 32
// noncharacters U+FDD0 to U+FDEF, which XML allows, no rule looks at, and hardly any text holds.
// The last of them is a mark, which
// - stands for nothing: it keeps what is beside it from an end of the value, where it is trimmed;
// - before a noncharacter, says that the value itself holds that one;
// - before a letter, stands with it for one of a few more characters.
//
// All texts are valid UTF-8 without NUL, or UTF-16 where they are Obx_Strings.
namespace tool {

// Where a value stands in a packet, which decides about the rules that it meets.
enum class PacketPlace {
    Text,            // a plain value, an original or duplicate id, a state
    Reference,       // a single reference
    ListItem,        // an item of a reference list
    HistoryColumn,   // a column of a line of history
    AttachmentLine,  // one of the four lines of an attachment
    None             // no rule is applied: what a session hands back
};

// `value` as it has to stand in a guarded packet: Restored makes `value` of it, and the rules of a
// packet leave it as it is. The same text where no rule would change it. A value takes as many
// UTF-16 units as before, but for marks and letters: so room that it just fits it mostly still
// fits.
std::string Guarded(std::string_view value, PacketPlace place);
// Whether that is the value itself, as it mostly is.
bool StandsAsItIs(std::string_view value, PacketPlace place);
Obx_String Guarded(const Obx_String& value, PacketPlace place);

// Whether Restored changes the text. Cheap.
bool IsGuarded(std::string_view text);
bool IsGuarded(std::u16string_view text);

// What a text that holds guarded values says, such as a value itself or a message about it. For
// lists, history and attachments only after they have been taken apart.
std::string Restored(std::string_view text);
Obx_String Restored(const Obx_String& text);

}  // namespace tool

#endif
