#include "tests/scripted/scripted_answers.h"

ScriptedAnswers::Sentence ScriptedAnswers::OnCall(const std::string& name, int occurrence) {
    m_told.push_back({name, occurrence, std::monostate{}, false});
    return Sentence(m_told.back().answer);
}

ScriptedAnswer ScriptedAnswers::Next(const std::string& name) {
    const int occurrence = ++m_counts[name];
    for (Told& told : m_told) {
        const bool fits = told.occurrence == kEveryOccurrence || told.occurrence == occurrence;
        if (fits && told.name == name) {
            told.asked = true;
            return told.answer;
        }
    }
    return std::monostate{};
}

std::vector<std::string> ScriptedAnswers::NeverAsked() const {
    std::vector<std::string> names;
    for (const Told& told : m_told) {
        if (!told.asked) {
            names.push_back(told.name + " " + std::to_string(told.occurrence));
        }
    }
    return names;
}
