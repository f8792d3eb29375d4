#include "random_records.h"

#include <array>
#include <iterator>

namespace reading {

std::string RandomText::Soup() {
    static constexpr std::array kPieces = {
        "<record>", "</record>", "</record >", "<record", "<records>", "<!--", "-->",
        "--",       "<![CDATA[", "]]>",        "]",       "<?a",       "?>",   "<?",
        "<!",       "<",         ">",          "/",       "r",         "\n",   "\r\n",
        " x ",      "\xC3\xA4",  "\xFF",       "\xE2\x82"};
    std::string text;
    for (std::size_t count = Below(60); count > 0; --count) {
        text += kPieces[Below(kPieces.size())];
    }
    return text;
}

std::string RandomText::Section() {
    static constexpr std::array kInsides = {
        "",    "x",  "<record>", "</record>", "<record>\n</record>",
        "<a>", "]]", "->",       " ? ",       "<record><record>"};
    std::string inside = kInsides[Below(kInsides.size())];
    switch (Below(3)) {
        case 0:
            return "<!--" + inside + " -->";
        case 1:
            return "<![CDATA[" + inside + "]]>";
        default:
            return "<?p " + inside + " ?>";
    }
}

std::string RandomText::Content() {
    static constexpr std::array kTexts = {"", "a", " b\n", "&lt;c&amp;", "\xE2\x82\xAC", "d > e"};
    std::string content;
    for (std::size_t count = Below(4); count > 0; --count) {
        content += Below(3) == 0 ? Section() : kTexts[Below(kTexts.size())];
    }
    return content;
}

std::string RandomText::Record() {
    std::string record = "<record>";
    for (std::size_t count = Below(5); count > 0; --count) {
        record += "\n <field name=\"f" + std::to_string(count) + "\">" + Content() + "</field>";
        if (Below(4) == 0) {
            record += "<!--" + std::to_string(Below(100)) + "<record>-->";
        }
    }
    return record + (Below(5) == 0 ? "</record\n>" : "</record>");
}

std::string RandomText::Gap() {
    static constexpr std::array kTexts = {"", "\n", "<other>x</other>", " y ", "<record id='1'/>"};
    return Below(4) == 0 ? Section() : kTexts[Below(kTexts.size())];
}

std::string RandomText::Value() {
    static constexpr const char* kPieces[] = {"a",
                                              "B",
                                              "BLANK",
                                              "blan\xE2\x84\xAA",
                                              "r",
                                              "u",
                                              "e",
                                              "f",
                                              "&",
                                              "amp;",
                                              "lt;",
                                              "gt;",
                                              "&lt;",
                                              "&LT;",
                                              "&quot;",
                                              "&apos;",
                                              "#x9;",
                                              "&#xA;",
                                              "&#xD;",
                                              "&#10;",
                                              ";",
                                              "<",
                                              ">",
                                              "]]>",
                                              "<!--",
                                              "\"",
                                              ",",
                                              " ",
                                              "\t",
                                              "\n",
                                              "\r",
                                              "\r\n",
                                              "\x0B",
                                              "\x0C",
                                              "\x01",
                                              "\x1B",
                                              "\x1C",
                                              "\x1D",
                                              "\x1E",
                                              "\x1F",
                                              "\x7F",
                                              "\xC2\x85",
                                              "\xC2\xA0",
                                              "\xE2\x80\xA8",
                                              "\xE3\x80\x80",
                                              "\xEF\xBF\xBE",
                                              "\xEF\xBF\xBF",
                                              "\xEF\xBF\xBD",
                                              "\xEF\xBB\xBF",
                                              "\xEF\xB7\x8F",
                                              "\xEF\xB7\x90",
                                              "\xEF\xB7\x91",
                                              "\xEF\xB7\xAE",
                                              "\xEF\xB7\xAF",
                                              "\xEF\xB7\xB0",
                                              "\xF0\x9F\xBF\xBE",
                                              "\xF0\x9F\x90\x9E",
                                              "\xC3\xBC",
                                              "/",
                                              "\\",
                                              "name.txt"};
    std::string text;
    for (std::size_t count = Below(7); count > 0; --count) {
        text += kPieces[Below(std::size(kPieces))];
    }
    return text;
}

unsigned NewSeed() {
    return std::random_device()();
}

}  // namespace reading
