#ifndef TESTS_SCRIPTED_CALL_LOG_H
#define TESTS_SCRIPTED_CALL_LOG_H

#include <initializer_list>
#include <string>
#include <vector>

// What happened to a scripted core, one line of UTF-8 text an event, in order.
class CallLog {
  public:
    enum class Kind {
        // A call that looks something up in the data, changes it, or runs a query.
        kCall,
        // A call that only asks for a definition: names, types, keys.
        kQuestion,
        // A trace of the importer, and one of any other class.
        kTrace,
        kOtherTrace,
        // The last handle to an object has gone.
        kRelease,
    };

    void Add(Kind kind, std::string text);
    void Clear() { m_lines.clear(); }

    // The lines of these kinds. Lines that are not calls or questions are told from them by a word
    // in front: "trace: ", "release: ".
    std::vector<std::string> Lines(std::initializer_list<Kind> kinds) const;

    // The lines of one kind, without the word in front.
    std::vector<std::string> Texts(Kind kind) const;

  private:
    struct Line {
        Kind kind;
        std::string text;
    };

    std::vector<Line> m_lines;
};

#endif
