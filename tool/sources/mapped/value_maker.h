#ifndef TOOL_SOURCES_MAPPED_VALUE_MAKER_H
#define TOOL_SOURCES_MAPPED_VALUE_MAKER_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tool/map/map_file.h"
#include "tool/sources/mapped/local_time.h"
#include "tool/sources/mapped/map_notes.h"
#include "tool/sources/mapped/row_item.h"

namespace tool {

// A field of a step with what its value is made by.
struct FieldPlan {
    const MapField* field = nullptr;
    bool isList = false;  // takes several values
    bool isTime = false;  // takes a date
    const std::vector<std::string>* nullIf = nullptr;
    std::shared_ptr<const LocalZone> zone;
    std::string subject;  // what notes call it: "bug, field title"
};

// What was made: no value, one, or several.
struct MadeValue {
    std::vector<std::string> texts;
    std::string error;  // why there is none, and the record is rejected; empty: there is no error
};

// Makes values of what stands in rows.
class ValueMaker {
  public:
    // `notes` outlives the object. A map cannot make more than `largest` bytes of one value.
    ValueMaker(ForbiddenCharacters forbidden, std::size_t largest, MapNotes& notes)
        : m_forbidden(forbidden), m_largest(largest), m_notes(notes) {}

    // The value of a field: all of it but what comes after `known_only` where the field has that.
    MadeValue Make(const FieldPlan& plan, const RowItem& item);

    // What comes after `known_only`: `join` and `pick`, `default`, `required`.
    static void Finish(const FieldPlan& plan, MadeValue& value);

    // Whether all tests of `when` hold.
    bool Holds(const std::vector<MapTest>& tests, const RowItem& item,
               const std::vector<std::string>& nullIf);

  private:
    void TakeFrom(const FieldPlan& plan, const RowItem& item, MadeValue& value);
    void TakePattern(const FieldPlan& plan, const RowItem& item, MadeValue& value);
    void AppendPart(const FieldPlan& plan, const RowItem& item, const TemplatePart& part,
                    MadeValue& value);
    bool TakeTexts(const FieldPlan& plan, const RowItem& item, const MapAddress& address,
                   std::vector<std::string>& texts, std::string& error);
    bool LeavesAsItIs(const FieldPlan& plan) const;
    void ChangeTexts(const FieldPlan& plan, MadeValue& value);
    void ChangeText(const FieldPlan& plan, std::string& text, std::string& error);
    void LookUp(const FieldPlan& plan, std::string& text, std::string& error);
    void MakeDate(const FieldPlan& plan, std::string& text, std::string& error);
    void Cut(const FieldPlan& plan, std::string& text);
    void ReplaceForbidden(const FieldPlan& plan, std::string& text, std::string& error);
    std::string TooLarge(std::string_view what) const;

    ForbiddenCharacters m_forbidden;
    std::size_t m_largest;
    MapNotes& m_notes;
    std::vector<RowTree::Index> m_nodes;
    std::vector<FoundValue> m_found;
};

}  // namespace tool

#endif
