#ifndef PLATFORM_FOUNDATION_OBX_STRING_H
#define PLATFORM_FOUNDATION_OBX_STRING_H

#include <compare>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

// A string of UTF-16 units; owns its text. All names, values, messages and error texts are carried
// in it. Indexes and lengths count units, from 0.
class Obx_String {
  public:
    // One value for Format: a text (for %s) or an integer (for %d). It refers to the text it is
    // made from and lives only as long as the call.
    class FormatArgument {
      public:
        FormatArgument(const Obx_String& text) : m_text(text.View()), m_isText(true) {}
        FormatArgument(const char16_t* text) : m_text(ViewOf(text)), m_isText(true) {}
        template <std::integral Integer>
        FormatArgument(Integer number) : m_number(static_cast<long long>(number)) {}

        bool IsText() const { return m_isText; }
        std::u16string_view Text() const { return m_text; }
        long long Number() const { return m_number; }

      private:
        std::u16string_view m_text;
        long long m_number = 0;
        bool m_isText = false;
    };

    Obx_String() = default;
    // Copies the zero-terminated text. A null pointer counts as the empty text, here and below.
    Obx_String(const char16_t* text);
    Obx_String(const unsigned short* text);
    explicit Obx_String(std::u16string_view text) : m_text(text) {}
    explicit Obx_String(std::u16string&& text) noexcept : m_text(std::move(text)) {}

    // From and to UTF-8. Invalid parts become U+FFFD; code that must not lose anything converts
    // with Utf8ToUtf16 and Utf16ToUtf8 of utf.h.
    static Obx_String FromUtf8(std::string_view text);
    std::string ToUtf8() const;

    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }

    // The zero-terminated units; valid until the string is changed or destroyed.
    const char16_t* GetString() const { return m_text.c_str(); }
    const unsigned short* Units() const;
    std::u16string_view View() const { return m_text; }

    // The unit at `index`, which must be below GetLength().
    char16_t operator[](int index) const { return m_text[static_cast<std::size_t>(index)]; }

    Obx_String& operator+=(const Obx_String& text);
    Obx_String& operator+=(const char16_t* text);
    Obx_String& operator+=(char16_t unit);
    friend Obx_String operator+(Obx_String left, const Obx_String& right);
    friend Obx_String operator+(Obx_String left, const char16_t* right);
    friend Obx_String operator+(const char16_t* left, const Obx_String& right);

    // Exact comparison, unit by unit.
    friend bool operator==(const Obx_String& a, const Obx_String& b) {
        return a.m_text == b.m_text;
    }
    friend bool operator==(const Obx_String& a, const char16_t* b) { return a.m_text == ViewOf(b); }
    friend std::strong_ordering operator<=>(const Obx_String& a, const Obx_String& b) {
        return a.m_text.compare(b.m_text) <=> 0;
    }

    // 0 when the texts are equal without regard to case, else below or above 0. Case is folded by
    // Unicode's full default folding, independent of the locale.
    int CompareNoCase(const Obx_String& other) const { return CompareNoCase(other.View()); }
    int CompareNoCase(const char16_t* other) const { return CompareNoCase(ViewOf(other)); }
    int CompareNoCase(std::u16string_view other) const;

    // Remove white space (Unicode's White_Space property) from one end.
    void TrimLeft();
    void TrimRight();

    // The part that begins at `first`; what lies outside the string is left out.
    Obx_String Mid(int first) const;
    Obx_String Mid(int first, int count) const;

    // The index of the first occurrence at or after `start`, or -1.
    int Find(std::u16string_view what, int start = 0) const;

    // Replaces the string by `format` in which each %s is replaced by the next argument, which must
    // be a text, and each %d by the next one, which must be an integer; %% gives %. A format that
    // does not fit its arguments throws a CException*.
    template <typename... Arguments>
    void Format(const char16_t* format, const Arguments&... arguments) {
        FormatList(format, {FormatArgument(arguments)...});
    }

  private:
    static std::u16string_view ViewOf(const char16_t* text) {
        return text == nullptr ? std::u16string_view() : std::u16string_view(text);
    }
    void FormatList(std::u16string_view format, std::initializer_list<FormatArgument> arguments);

    std::u16string m_text;
};

template <>
struct std::hash<Obx_String> {
    std::size_t operator()(const Obx_String& text) const noexcept {
        return std::hash<std::u16string_view>{}(text.View());
    }
};

#endif
