#include "platform/messages/catalogue.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "platform/foundation/obx_string.h"
#include "platform/messages/message_ids.h"
#include "tests/platform/messages/declared_ids.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> ParametersOf(std::u16string_view text) {
    std::vector<std::string> names;
    for (auto name = NextCatalogueParameter(text); !name.empty();
         name = NextCatalogueParameter(text)) {
        names.push_back(Obx_String(name).ToUtf8());
        text = text.substr(static_cast<std::size_t>(name.data() - text.data()) + name.size());
    }
    return names;
}

TEST(Catalogue, IdsAscend) {
    int former = 0;
    for (const CatalogueMessage& message : MessageCatalogue()) {
        EXPECT_GT(message.id, former);
        former = message.id;
    }
}

TEST(Catalogue, FindsEachMessageByItsId) {
    for (const CatalogueMessage& message : MessageCatalogue()) {
        EXPECT_EQ(FindCatalogueMessage(message.id), &message);
    }
}

TEST(Catalogue, FindsNothingUnderAnIdThatNobodyUses) {
    for (const int id : {-1, 0, 15863, 20000, 99999}) {
        EXPECT_EQ(FindCatalogueMessage(id), nullptr) << id;
    }
}

TEST(Catalogue, HoldsAMessageForEachDeclaredIdAndNoOther) {
    std::set<int> declared;
    for (const auto& [name, id] : DeclaredIds()) {
        EXPECT_NE(FindCatalogueMessage(id), nullptr) << name;
        EXPECT_TRUE(declared.insert(id).second) << name << " shares its id with another name";
    }
    EXPECT_EQ(declared.size(), MessageCatalogue().size());
}

TEST(Catalogue, EachUnderscoreOfATextBelongsToAParameter) {
    for (const CatalogueMessage& message : MessageCatalogue()) {
        std::string text = Obx_String(message.text).ToUtf8();
        for (const std::string& name : ParametersOf(message.text)) {
            text.erase(text.find(name), name.size());
        }
        EXPECT_EQ(text.find('_'), std::string::npos) << message.id << " leaves " << text;
    }
}

TEST(Catalogue, TextsAndExplanationsAreSentences) {
    const auto begins = [](char16_t unit) { return unit >= u'A' && unit <= u'Z'; };
    for (const CatalogueMessage& message : MessageCatalogue()) {
        const Obx_String text(message.text);
        ASSERT_FALSE(text.IsEmpty()) << message.id;
        // One line in a list of problems, in the form that those who read such lists expect.
        const bool isListItem = message.id == message_id::kHistoryTextTooLong;
        EXPECT_TRUE(isListItem || begins(text[0])) << message.id;
        // A text may end with a message of the core, which brings its own full stop.
        const bool endsWithParameter = text[text.GetLength() - 1] == u'_';
        EXPECT_TRUE(isListItem || endsWithParameter || text[text.GetLength() - 1] == u'.')
            << message.id;
        const std::string explanation = message.explanation;
        ASSERT_FALSE(explanation.empty()) << message.id;
        EXPECT_TRUE(begins(static_cast<char16_t>(explanation.front()))) << message.id;
        EXPECT_EQ(explanation.back(), '.') << message.id;
        EXPECT_GT(explanation.size(), text.ToUtf8().size() / 2) << message.id;
    }
}

struct ContractParameters {
    int id;
    std::set<std::string> parameters;
};

TEST(Catalogue, ImporterMessagesNameAllTheirParameters) {
    const std::set<std::string> line = {"_value_", "_linenum_", "_id_", "_idvalue_"};
    const std::set<std::string> reference = {"_entitydef_", "_fieldname_", "_refentitydef_"};
    const std::set<std::string> search = {"_datatype_", "_field_", "_value_"};
    const ContractParameters contract[] = {
        {15861, line},
        {15862, line},
        {15864, {"_parentid_", "_parentidvalue_", "_entityid_", "_entityidvalue_"}},
        {15865, reference},
        {15866, {"_attachmentid_"}},
        {15867, {}},
        {15868, reference},
        {15869, {"_coreinfo_"}},
        {15870, {"_coreinfo_"}},
        {15871, search},
        {15872, {"_historyid_", "_coreinfo_"}},
        {15873, {"_datatype_"}},
        {15874, search},
        {15875, {"_field_name_", "_linenum_", "_id_", "_idvalue_"}},
    };
    for (const ContractParameters& expected : contract) {
        const CatalogueMessage* message = FindCatalogueMessage(expected.id);
        ASSERT_NE(message, nullptr) << expected.id;
        const std::vector<std::string> names = ParametersOf(message->text);
        EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expected.parameters)
            << expected.id;
    }
}

TEST(Catalogue, BadValueTakesTextFileAndLine) {
    EXPECT_THAT(ParametersOf(FindCatalogueMessage(message_id::kBadValue)->text),
                ElementsAre("_text_", "_file_", "_line_"));
}

TEST(CatalogueParameters, AreWholeWordsBetweenUnderscores) {
    EXPECT_THAT(ParametersOf(u"\"_field_\" of _id_."), ElementsAre("_field_", "_id_"));
    EXPECT_THAT(ParametersOf(u"_field_name_ and _field_"), ElementsAre("_field_name_", "_field_"));
    EXPECT_THAT(ParametersOf(u"_a_"), ElementsAre("_a_"));
}

TEST(CatalogueParameters, AreNothingElse) {
    for (const char16_t* text : {u"", u"plain", u"action_time", u"_open", u"open_", u"a _ b", u"__",
                                 u"_Upper_", u"_a b_"}) {
        EXPECT_THAT(ParametersOf(text), IsEmpty()) << Obx_String(text).ToUtf8();
    }
}

}  // namespace
