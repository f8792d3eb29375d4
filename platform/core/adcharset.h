#ifndef PLATFORM_CORE_ADCHARSET_H
#define PLATFORM_CORE_ADCHARSET_H

#include <string>

// A character set of the texts that leave or enter the system.
class AdCharset {
  public:
    // How a conversion treats what the character set cannot carry.
    enum class converter_t : int {
        // Puts a replacement character in its place.
        kLossy = 0,
        // Refuses the text.
        kStrict = 1,
    };

    static const AdCharset& getUTF8Charset();

    const char* getName() const { return m_name; }

  private:
    explicit AdCharset(const char* name) : m_name(name) {}

    const char* m_name;
};

// A text in an 8-bit character set.
class AdMbcsString {
  public:
    // Replaces the text by the conversion of the zero-terminated UTF-16 text; a null pointer counts
    // as the empty text. The strict converter throws a PaMsgException* (message 20002) with the
    // index of the first unit that belongs to no character.
    void cvtFromTchar(const AdCharset& charset, const unsigned short* text,
                      AdCharset::converter_t converter);

    // The zero-terminated text; valid until the object is changed or destroyed.
    const char* getData() const { return m_data.c_str(); }

  private:
    std::string m_data;
};

#endif
