#ifndef ZTIMPORTER_ADIMPORTER_RECORD_ADDITION_H
#define ZTIMPORTER_ADIMPORTER_RECORD_ADDITION_H

#include "ztimporter/adimporter/original_record.h"

// One record of a packet that adds to records imported earlier: history or attachments. Both go the
// same way: collect what the source's record brings, find the database record that it became, add
// to it, validate and commit it.
class AdImporter::Steps::RecordAddition {
  public:
    // The importer and the error text must outlive the object. `endsWithError` is the trace of the
    // operation's failures.
    RecordAddition(AdImporter& importer, Obx_String& error, const char16_t* endsWithError)
        : m_importer(importer), m_error(error), m_endsWithError(endsWithError) {}
    virtual ~RecordAddition() = default;
    RecordAddition(const RecordAddition&) = delete;
    RecordAddition& operator=(const RecordAddition&) = delete;

    // Handles the parser's current record. False when it fails, which ends the packet.
    bool Import();

  protected:
    // Takes what is to be added out of the record map; false when there is nothing.
    virtual bool Collect() = 0;
    // Adds it to the open record; failures are left in the error text.
    virtual void AddTo(const AdEntityPtr& entity) = 0;
    // What else is to be done once all was added and before the record is validated.
    virtual void BeforeValidation() {}

    AdImporter& m_importer;
    Obx_String& m_error;

  private:
    bool AddToOriginal(OriginalRecord& original);
    bool Fail() const;

    const char16_t* m_endsWithError;
};

#endif
