#ifndef ZTIMPORTER_ADIMPORTER_ORIGINAL_RECORD_H
#define ZTIMPORTER_ADIMPORTER_ORIGINAL_RECORD_H

#include "ztimporter/adimporter/steps.h"

// The search for the one database record of the configured type whose original-id field holds a
// given identity of the source. What follows from the outcome, and whether the result set is given
// back to the core, is the caller's: the operations differ in both.
class AdImporter::Steps::OriginalRecord {
  public:
    enum class Matches {
        kNone,
        kOne,
        kMany,
        // The core cannot tell how many records there are.
        kUnknown,
    };

    // Searches; without a configured field or without a value nothing is searched and nothing
    // found. A search that fails finds nothing either and leaves its text in `error`.
    OriginalRecord(AdImporter& importer, Obx_String value, Obx_String& error);

    Matches Found() const { return m_found; }

    // The identifier of the one record found.
    Obx_String Identifier() const;

    // The catalogue message for kNone and kMany.
    Obx_String NotOneText() const;

    // Gives the result set back to the core, when there is one.
    void Unbuild();

    // Only lets go of the result set, when there is one.
    void Release() { m_resultSet.SetPtr(nullptr); }

  private:
    AdImporter& m_importer;
    Obx_String m_value;
    AdResultSetPtr m_resultSet;
    Matches m_found = Matches::kNone;
};

#endif
