#ifndef TESTS_SCRIPTED_SCRIPTED_ANSWERS_H
#define TESTS_SCRIPTED_SCRIPTED_ANSWERS_H

#include <list>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "platform/foundation/obx_string.h"
#include "platform/messages/pamessage.h"
#include "tests/scripted/thrown.h"

struct ThrowAnswer {
    ThrownKind kind;
    Obx_String text;
};

struct NullAnswer {};

// What a call does instead of what it would do by itself; monostate: a test told it nothing.
using ScriptedAnswer =
    std::variant<std::monostate, ThrowAnswer, NullAnswer, Obx_String, PaMessage, long>;

// What calls were told to answer, by the call's name and by which of its occurrences it is.
class ScriptedAnswers {
  public:
    static constexpr int kEveryOccurrence = 0;

    // Ends a sentence such as OnCall("Commit", 2).Throws(...).
    class Sentence {
      public:
        explicit Sentence(ScriptedAnswer& answer) : m_answer(answer) {}

        void Throws(ThrownKind kind, const Obx_String& text = u"boom") {
            m_answer = ThrowAnswer{kind, text};
        }
        void ReturnsNull() { m_answer = NullAnswer{}; }
        // The text that the call returns or, for ImportHistoryData, the text about its problems.
        void ReturnsText(const Obx_String& text) { m_answer = text; }
        // The message that Validate and Commit leave.
        void Reports(const PaMessage& message) { m_answer = message; }
        // A row count, a status, a type.
        void ReturnsNumber(long number) { m_answer = number; }

      private:
        ScriptedAnswer& m_answer;
    };

    // Says what the n-th call of this name does, counted from 1.
    Sentence OnCall(const std::string& name, int occurrence = kEveryOccurrence);

    // Counts the call and gives the answer told for it.
    ScriptedAnswer Next(const std::string& name);

    // Counts from 1 again; what was told stays.
    void StartCountingAgain() { m_counts.clear(); }

    // Calls that were told to answer something and never happened.
    std::vector<std::string> NeverAsked() const;

  private:
    struct Told {
        std::string name;
        int occurrence;
        ScriptedAnswer answer;
        bool asked;
    };

    std::list<Told> m_told;
    std::map<std::string, int> m_counts;
};

#endif
