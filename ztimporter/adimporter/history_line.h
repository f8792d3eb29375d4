#ifndef ZTIMPORTER_ADIMPORTER_HISTORY_LINE_H
#define ZTIMPORTER_ADIMPORTER_HISTORY_LINE_H

#include <array>
#include <string_view>

#include "ztimporter/adimporter/steps.h"
#include "ztimporter/entrylabels.h"
#include "ztimporter/historycolumns.h"

// One line of a record's history on its way into the batch.
class AdImporter::Steps::HistoryLine {
  public:
    // `entry` is the line as the record parser reads it; an expiry time, which the parser never
    // sets, counts too. Lines are numbered from 1. Importer, and entry or text of the columns, must
    // outlive the object.
    HistoryLine(AdImporter& importer, const CMapStringToString& entry, long number);
    HistoryLine(AdImporter& importer, const HistoryColumns& columns, long number);

    // Adds the line to the batch as an entry of the record. A line that cannot be one is left out,
    // with the reason in the error text.
    void AddToBatch(long recordDbid, Obx_String& error);

  private:
    std::u16string_view Column(HistoryColumn column) const { return m_columns[column]; }
    // Whether a column that an entry needs is empty, with the reason in the error text.
    bool LacksColumn(Obx_String& error) const;
    Obx_String InvalidTimeText(int messageId, std::u16string_view time) const;
    AdHistory& ClaimEntry(long recordDbid) const;

    AdImporter& m_importer;
    long m_number;
    // The values of the entry; those that it does not have are empty.
    std::array<std::u16string_view, history_label.size()> m_columns;
    std::u16string_view m_expiryTime;
};

#endif
