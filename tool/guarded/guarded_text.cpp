#include "tool/guarded/guarded_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "platform/foundation/markup_escapes.h"
#include "platform/foundation/utf.h"
#include "platform/foundation/white_space.h"
#include "tool/guarded/blank_word.h"
#include "tool/io/byte_set.h"

namespace tool {

namespace {

// What each of the noncharacters from U+FDD0 on stands for; the mark follows them.
constexpr std::string_view kStandFor =
    "\t\n\r&,"
    "\x01\x02\x03\x04\x05\x06\x07\x08\x0B\x0C\x0E\x0F"
    "\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1A\x1B\x1C\x1D";
static_assert(kStandFor.size() == 31);

// The rest of what XML forbids: the letter that stands for it behind a mark.
struct Marked {
    char letter;
    std::string_view text;
};
constexpr std::array kMarked = {Marked{'r', "\x1E"}, Marked{'u', "\x1F"},
                                Marked{'e', "\xEF\xBF\xBE"}, Marked{'f', "\xEF\xBF\xBF"}};

// U+FDD0 to U+FDEF in UTF-8 are these two bytes and one from 0x90 to 0xAF.
constexpr std::string_view kLead = "\xEF\xB7";
constexpr unsigned char kFirst = 0x90;
constexpr std::string_view kMark = "\xEF\xB7\xAF";
constexpr std::size_t kSize = kMark.size();

// The same in UTF-16.
constexpr char16_t kFirstUnit = 0xFDD0;
constexpr char16_t kLastUnit = 0xFDEF;

// What the importer decodes although it belongs to the value: each "&" of a value is written as
// "&amp;", which the importer decodes first, and then it looks for the other escapes in what came
// of that. So "&lt;" in a value comes out as "<", while "&amp;" stays what it is.
constexpr std::span<const MarkupEscape> kDecodedAgain = std::span(kMarkupEscapes).subspan(1);

// The most characters that one of those has between "&" and the semicolon.
constexpr std::size_t kLongestName = 4;

// Which of the noncharacters the text begins with, from 0; nothing when it begins with none.
std::optional<std::size_t> NoncharacterAt(std::string_view text) {
    if (text.size() < kSize || !text.starts_with(kLead)) {
        return std::nullopt;
    }
    const std::size_t number = static_cast<unsigned char>(text[2]) - std::size_t{kFirst};
    return number <= kStandFor.size() ? std::optional(number) : std::nullopt;
}

constexpr bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// Whether an ampersand with `rest` behind it is not read as one. Names of files are also compared
// without regard to case, guarded ones as well, so there it does not matter what stands between.
bool IsDecoded(std::string_view rest, PacketPlace place) {
    if (place == PacketPlace::AttachmentLine) {
        return rest.substr(0, kLongestName + 1).find(';') != std::string_view::npos;
    }
    return std::any_of(
        kDecodedAgain.begin(), kDecodedAgain.end(),
        [rest](const MarkupEscape& escape) { return rest.starts_with(escape.sequence.substr(1)); });
}

constexpr bool IsSeparator(char c, PacketPlace place) {
    switch (place) {
        case PacketPlace::ListItem:
            return c == ',';
        case PacketPlace::HistoryColumn:
            return c == '\t' || c == '\n' || c == '\r';
        case PacketPlace::AttachmentLine:
            return c == '\n' || c == '\r';
        default:
            return false;
    }
}

bool HasMeaning(std::string_view text, std::size_t at, PacketPlace place) {
    const char c = text[at];
    return IsControl(c) || IsSeparator(c, place) ||
           (c == '&' && IsDecoded(text.substr(at + 1), place));
}

const Marked* FindMarked(std::string_view text) {
    const auto* const found =
        std::find_if(kMarked.begin(), kMarked.end(),
                     [text](const Marked& marked) { return text.starts_with(marked.text); });
    return found != kMarked.end() ? found : nullptr;
}

// What may have to be guarded in a place begins with one of these bytes.
constexpr ByteSet SuspectsOf(PacketPlace place) {
    return ByteSet([place](char c) {
        return c == kLead.front() ||
               (place != PacketPlace::None && (c == '&' || IsControl(c) || IsSeparator(c, place)));
    });
}

constexpr std::array kSuspects = {
    SuspectsOf(PacketPlace::Text),           SuspectsOf(PacketPlace::Reference),
    SuspectsOf(PacketPlace::ListItem),       SuspectsOf(PacketPlace::HistoryColumn),
    SuspectsOf(PacketPlace::AttachmentLine), SuspectsOf(PacketPlace::None)};

const ByteSet& SuspectsIn(PacketPlace place) {
    return kSuspects[static_cast<std::size_t>(place)];
}

// Appends the character of `text` at `at`, or what stands for it, and moves behind it.
void AppendCharacter(std::string& out, std::string_view text, std::size_t& at, PacketPlace place) {
    const std::string_view rest = text.substr(at);
    if (NoncharacterAt(rest)) {
        out += kMark;
        out += rest.substr(0, kSize);
        at += kSize;
        return;
    }
    const Marked* const marked = place != PacketPlace::None ? FindMarked(rest) : nullptr;
    if (marked != nullptr) {
        out += kMark;
        out += marked->letter;
        at += marked->text.size();
    } else if (place != PacketPlace::None && HasMeaning(text, at, place)) {
        out += kLead;
        out += static_cast<char>(kFirst + kStandFor.find(text[at++]));
    } else {
        out += text[at++];
    }
}

// All white space is of one UTF-16 unit, and of at most three bytes.
bool BeginsWithWhiteSpace(std::string_view text) {
    if (!text.empty() && static_cast<unsigned char>(text.front()) < 0x80U) {
        return IsWhiteSpace(static_cast<char16_t>(text.front()));
    }
    const std::u16string units = Utf8ToUtf16Lossy(text.substr(0, 3));
    return !units.empty() && IsWhiteSpace(units.front());
}

bool EndsWithWhiteSpace(std::string_view text) {
    if (!text.empty() && static_cast<unsigned char>(text.back()) < 0x80U) {
        return IsWhiteSpace(static_cast<char16_t>(text.back()));
    }
    const std::size_t size = std::min<std::size_t>(text.size(), 3);
    const std::u16string units = Utf8ToUtf16Lossy(text.substr(text.size() - size));
    return !units.empty() && IsWhiteSpace(units.back());
}

// What the mark before `at` and what stands there mean; moves behind what belongs to it.
std::string_view TakeMarked(std::string_view text, std::size_t& at) {
    const std::string_view rest = text.substr(at);
    if (NoncharacterAt(rest)) {
        at += kSize;
        return rest.substr(0, kSize);
    }
    for (const Marked& marked : kMarked) {
        if (rest.starts_with(marked.letter)) {
            ++at;
            return marked.text;
        }
    }
    return {};
}

}  // namespace

bool StandsAsItIs(std::string_view value, PacketPlace place) {
    const bool isReference = place == PacketPlace::Reference;
    const bool isTrimmed = isReference || place == PacketPlace::ListItem;
    const bool mayEmpty = isReference || place == PacketPlace::Text;
    return !SuspectsIn(place).IsIn(value) &&
           !(isTrimmed && (BeginsWithWhiteSpace(value) || EndsWithWhiteSpace(value))) &&
           !(mayEmpty && IsBlankWord(value));
}

std::string Guarded(std::string_view value, PacketPlace place) {
    const ByteSet& suspects = SuspectsIn(place);
    std::string out;
    for (std::size_t at = 0; at < value.size();) {
        const std::size_t next = suspects.Find(value, at);
        out += value.substr(at, next - at);
        at = next;
        if (at < value.size()) {
            AppendCharacter(out, value, at, place);
        }
    }
    const bool isReference = place == PacketPlace::Reference;
    if (isReference || place == PacketPlace::ListItem) {
        out.insert(0, BeginsWithWhiteSpace(out) ? kMark : "");
        out += EndsWithWhiteSpace(out) ? kMark : "";
    }
    if ((isReference || place == PacketPlace::Text) && IsBlankWord(out)) {
        out.insert(1, kMark);
    }
    return out;
}

Obx_String Guarded(const Obx_String& value, PacketPlace place) {
    if (place == PacketPlace::None && !IsGuarded(value.View())) {
        return value;
    }
    return Obx_String::FromUtf8(Guarded(std::string_view(value.ToUtf8()), place));
}

bool IsGuarded(std::string_view text) {
    for (std::size_t at = text.find(kLead); at != std::string_view::npos;
         at = text.find(kLead, at + 1)) {
        if (NoncharacterAt(text.substr(at))) {
            return true;
        }
    }
    return false;
}

bool IsGuarded(std::u16string_view text) {
    const auto isOne = [](char16_t unit) {
        return static_cast<std::uint16_t>(unit - kFirstUnit) <= kLastUnit - kFirstUnit;
    };
    // Compilers can compare many units at a time where there is no way out in between.
    constexpr std::size_t block = 16;
    while (text.size() >= block) {
        std::uint16_t found = 0;
        for (std::size_t i = 0; i < block; ++i) {
            found = static_cast<std::uint16_t>(found | (isOne(text[i]) ? 1U : 0U));
        }
        if (found != 0) {
            return true;
        }
        text.remove_prefix(block);
    }
    return std::any_of(text.begin(), text.end(), isOne);
}

std::string Restored(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t next = std::min(text.find(kLead, at), text.size());
        out += text.substr(at, next - at);
        at = next;
        if (const auto number = NoncharacterAt(text.substr(at))) {
            at += kSize;
            out += *number < kStandFor.size() ? kStandFor.substr(*number, 1) : TakeMarked(text, at);
        } else if (at < text.size()) {
            out += text[at++];
        }
    }
    return out;
}

Obx_String Restored(const Obx_String& text) {
    return IsGuarded(text.View()) ? Obx_String::FromUtf8(Restored(std::string_view(text.ToUtf8())))
                                  : text;
}

}  // namespace tool
