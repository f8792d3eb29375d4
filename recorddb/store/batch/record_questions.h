#ifndef RECORDDB_STORE_BATCH_RECORD_QUESTIONS_H
#define RECORDDB_STORE_BATCH_RECORD_QUESTIONS_H

#include <cstdint>
#include <set>

#include "recorddb/schema.h"
#include "recorddb/store/batch/known_answers.h"
#include "recorddb/store/batch/question_round.h"

namespace recorddb {

// Asks for what belongs to records of which the dbid is known, in a round that the caller finishes;
// the answers are added to those that are known. Operations throw sql::Error.
class RecordQuestions {
  public:
    // Both outlive the round's end.
    RecordQuestions(QuestionRound& round, KnownAnswers& answers)
        : m_round(round), m_answers(answers) {}

    void AskForVersions(const schema::RecordType& type, const std::set<std::int64_t>& dbids);
    // Their columns, lists and versions.
    void AskForRows(const schema::RecordType& type, const std::set<std::int64_t>& dbids);
    void AskForTimes(const std::set<RecordKey>& records);    // of their history
    void AskForEntries(const std::set<RecordKey>& records);  // of it, as a whole
    void AskForAttachments(const std::set<RecordKey>& records);
    void AskForOriginals(const std::set<RecordKey>& duplicates);

  private:
    void AskForList(const schema::RecordType& type, const schema::Field& field,
                    const std::set<std::int64_t>& dbids);

    QuestionRound& m_round;
    KnownAnswers& m_answers;
};

}  // namespace recorddb

#endif
