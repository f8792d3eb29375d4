#include "recorddb/store/batch/question_round.h"

namespace recorddb {

void QuestionRound::Ask(Question question, sql::RowReader::Take take) {
    const Question& kept = m_questions.emplace_back(std::move(question));
    if (!kept.cells.empty()) {
        m_reader->Ask({kept.table, kept.columns, kept.keys, kept.cells, kept.order, kept.most},
                      std::move(take));
    }
}

}  // namespace recorddb
