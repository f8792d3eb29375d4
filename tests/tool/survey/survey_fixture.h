#ifndef TESTS_TOOL_SURVEY_FIXTURE_H
#define TESTS_TOOL_SURVEY_FIXTURE_H

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "temporary_folder.h"
#include "tool/survey/survey.h"
#include "tool/survey/survey_words.h"

namespace tool {

// A folder of exports, and what a survey says of it.
class SurveyFixture : public testing::Test {
  protected:
    void Write(std::string_view name, std::string_view content) const {
        const std::filesystem::path path = m_folder.Path() / name;
        std::filesystem::create_directories(path.parent_path());
        m_folder.Write(name, content);
    }

    Survey Look(const SurveyOptions& options = {}) const {
        return SurveyAll(SurveyFiles({m_folder.Path().string()}), options);
    }

    // The survey of the one file of that name and content.
    SourceSurvey LookAt(std::string_view name, std::string_view content,
                        const SurveyOptions& options = {}) const {
        Write(name, content);
        Survey survey = SurveyAll(SurveyFiles({m_folder.File(name)}), options);
        return std::move(survey.sources.at(0));
    }

    TemporaryFolder m_folder;
};

inline const AddressSurvey& At(const SourceSurvey& source, std::string_view address) {
    for (const AddressSurvey& known : source.addresses) {
        if (AddressText(source, known) == address) {
            return known;
        }
    }
    throw std::out_of_range("no address " + std::string(address));
}

inline AddressRef RefOf(const Survey& survey, std::size_t source, std::string_view address) {
    const auto& addresses = survey.sources.at(source).addresses;
    return {source,
            static_cast<std::size_t>(&At(survey.sources.at(source), address) - addresses.data())};
}

inline std::vector<std::string> AddressesOf(const SourceSurvey& source) {
    std::vector<std::string> texts;
    for (const AddressSurvey& address : source.addresses) {
        texts.push_back(AddressText(source, address));
    }
    return texts;
}

inline std::vector<std::string> PairsOf(const SourceSurvey& source) {
    std::vector<std::string> texts;
    for (const KeyPair& pair : source.keyPairs) {
        texts.push_back(AddressText(source, source.addresses.at(pair.first)) + ' ' +
                        AddressText(source, source.addresses.at(pair.second)));
    }
    return texts;
}

}  // namespace tool

#endif
