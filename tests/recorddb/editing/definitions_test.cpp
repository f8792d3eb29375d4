#include "recorddb/editing/definitions.h"

#include "session_fixture.h"

namespace recorddb {

namespace {

class DefinitionsTest : public OnEachEngine<SessionTest> {
  protected:
    std::vector<std::string> KeyOf(const char* type) {
        CStringArray labels;
        EXPECT_EQ(Type(type)->GetUniqueKeyFieldDefLabels(labels),
                  Type(type)->NumUniqueKeyFieldDefs());
        std::vector<std::string> texts;
        for (const Obx_String& label : labels) {
            texts.push_back(label.ToUtf8());
        }
        return texts;
    }
};

TEST_P(DefinitionsTest, KindsHaveTheirCodes) {
    EXPECT_EQ(Type("bug")->GetType(), 1);
    EXPECT_EQ(Type("user")->GetType(), 2);
}

TEST_P(DefinitionsTest, StateFieldExistsOnlyWithStates) {
    EXPECT_EQ(Type("bug")->GetStateFieldDef()->GetName(), u"state");
    EXPECT_EQ(Type("user")->GetStateFieldDef(), nullptr);
}

TEST_P(DefinitionsTest, UniqueKeysAreListedInOrder) {
    EXPECT_EQ(KeyOf("bug"), (std::vector<std::string>{"id"}));
    EXPECT_EQ(KeyOf("place"), (std::vector<std::string>{"town", "street"}));
    EXPECT_EQ(KeyOf("desk"), (std::vector<std::string>{"dbid", "owner"}));
}

TEST_P(DefinitionsTest, FieldsAreFoundWithoutRegardToCase) {
    EXPECT_EQ(Type("bug")->GetFieldDef(u"TITLE", 0)->GetName(), u"title");
    EXPECT_EQ(Type("bug")->GetFieldPath(u"DBID", 0), u"dbid");
    EXPECT_EQ(Thrown([&] { Type("bug")->GetFieldDef(u"titl", 0); }),
              "The record type \"bug\" has no field \"titl\".");
}

TEST_P(DefinitionsTest, ReferencesKnowTheirType) {
    EXPECT_EQ(Type("bug")->GetFieldDef(u"owner", 0)->GetReferenceEntityDef(), Type("user"));
    EXPECT_EQ(Type("bug")->GetFieldDef(u"watchers", 0)->GetReferenceEntityDef(), Type("user"));
    EXPECT_EQ(Type("bug")->GetFieldDef(u"title", 0)->GetReferenceEntityDef(), nullptr);
}

TEST_P(DefinitionsTest, AttachmentFieldsAreListed) {
    CStringArray names;
    names.Add(u"left over");
    Type("bug")->GetAttachmentFieldDefNames(names);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_EQ(names[0], u"files");
}

TEST_P(DefinitionsTest, EveryTypeCanBeImportedOnlyThoseWithStatesHaveDuplicates) {
    EXPECT_EQ(Type("user")->LookupActionDef(AdActionType_t::kImport)->GetName(), u"import");
    EXPECT_EQ(Type("bug")->LookupActionDef(AdActionType_t::kDuplicate)->GetType(),
              AdActionType_t::kDuplicate);
    EXPECT_EQ(Thrown([&] { Type("user")->LookupActionDef(AdActionType_t::kDuplicate); }),
              "The record type \"user\" has no action of the kind 4.");
}

ON_EACH_LAYOUT(DefinitionsTest);

}  // namespace

}  // namespace recorddb
