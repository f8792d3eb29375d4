#ifndef TESTS_SCRIPTED_SCRIPTED_CORE_H
#define TESTS_SCRIPTED_SCRIPTED_CORE_H

#include <initializer_list>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "platform/core/adhistory.h"
#include "platform/core/adsession.h"
#include "tests/scripted/call_argument.h"
#include "tests/scripted/call_log.h"
#include "tests/scripted/scripted_answers.h"
#include "tests/scripted/scripted_entity_def.h"

// The records that a search finds: the values of their column 1. The number of rows and the status
// of the first fetch follow from them unless they are told.
struct ScriptedMatches {
    std::vector<Obx_String> rows;
    std::optional<long> count;
    std::optional<int> status;
};

// A core without a database: what a test tells it and what was asked of it. All scripted objects
// refer to it, so it must outlive the handles to them.
class ScriptedCore {
  public:
    ScriptedCore() = default;
    ScriptedCore(const ScriptedCore&) = delete;
    ScriptedCore& operator=(const ScriptedCore&) = delete;
    ~ScriptedCore();

    // What the core knows.
    ScriptedEntityDef& AddRecordType(const Obx_String& name);
    ScriptedEntityDef* FindRecordType(const Obx_String& name) const;
    // A search of the record type for the records whose field equals the value. A search that was
    // not told finds nothing.
    ScriptedMatches& Matches(const Obx_String& recordType, const Obx_String& field,
                             const Obx_String& value);
    // The values that the field holds, in every record of every type.
    void SetFieldValues(const Obx_String& field, std::vector<Obx_String> values);
    const std::vector<Obx_String>* FindFieldValues(const Obx_String& field) const;
    // The database identifiers of new records count up from 101.
    long NextDbId() { return m_nextDbId++; }
    void StartDbIdsAgain() { m_nextDbId = 101; }

    // What it answers.
    ScriptedAnswers& Answers() { return m_answers; }
    ScriptedAnswers::Sentence OnCall(const std::string& name,
                                     int occurrence = ScriptedAnswers::kEveryOccurrence) {
        return m_answers.OnCall(name, occurrence);
    }

    // What was asked.
    CallLog& Log() { return m_log; }
    // Forgets what happened so far, so that what follows is looked at by itself.
    void ForgetCalls();
    // The entries of all ImportHistoryData calls, in order.
    std::vector<AdHistory>& ImportedHistory() { return m_importedHistory; }
    // Records, field values, queries and result sets that somebody still holds.
    int HandlesHeld() const { return m_handlesHeld; }

    // For the scripted objects: writes the line `before` + `name` + (arguments), then throws if
    // that was told, and else returns the answer told for the call.
    ScriptedAnswer Called(CallLog::Kind kind, const std::string& before, const std::string& name,
                          std::initializer_list<CallArgument> arguments);
    void HandleMade() { ++m_handlesHeld; }
    void HandleReleased(const std::string& what);

  private:
    CallLog m_log;
    ScriptedAnswers m_answers;
    std::list<std::unique_ptr<ScriptedEntityDef>> m_recordTypes;
    std::map<std::tuple<Obx_String, Obx_String, Obx_String>, ScriptedMatches> m_matches;
    std::map<Obx_String, std::vector<Obx_String>> m_fieldValues;
    std::vector<AdHistory> m_importedHistory;
    long m_nextDbId = 101;
    int m_handlesHeld = 0;
};

// The answer when it is of this kind, else what the object says by itself.
template <typename Kind>
Kind AnswerOr(const ScriptedAnswer& answer, Kind otherwise) {
    const Kind* told = std::get_if<Kind>(&answer);
    return told != nullptr ? *told : otherwise;
}

inline bool IsNullAnswer(const ScriptedAnswer& answer) {
    return std::holds_alternative<NullAnswer>(answer);
}

#endif
