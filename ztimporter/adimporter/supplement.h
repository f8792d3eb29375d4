#ifndef ZTIMPORTER_ADIMPORTER_SUPPLEMENT_H
#define ZTIMPORTER_ADIMPORTER_SUPPLEMENT_H

#include "ztimporter/adimporter/original_record.h"

// One record of a packet that adds to records imported earlier: history or attachments. The road is
// the same for both: collect what the source's record brings, find the database record that it
// became, add to it, save it.
class AdImporter::Supplement {
  public:
    // The importer and the error text must outlive the object. `endsWithError` is the trace of the
    // operation's failures.
    Supplement(AdImporter& importer, Obx_String& error, const char16_t* endsWithError)
        : m_importer(importer), m_error(error), m_endsWithError(endsWithError) {}
    virtual ~Supplement() = default;
    Supplement(const Supplement&) = delete;
    Supplement& operator=(const Supplement&) = delete;

    // Handles the parser's current record. False when it fails, which ends the packet.
    bool Import();

  protected:
    // Takes what is to be added out of the record map; false when there is nothing.
    virtual bool Collect() = 0;
    // Adds it to the open record; failures are left in the error text.
    virtual void AddTo(const AdEntityPtr& entity) = 0;
    // What else is to be done before the record is saved.
    virtual void Complete() {}

    AdImporter& m_importer;
    Obx_String& m_error;

  private:
    bool AddToOriginal(OriginalRecord& original);
    bool Fail() const;

    const char16_t* m_endsWithError;
};

#endif
