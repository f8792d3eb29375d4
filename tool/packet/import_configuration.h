#ifndef TOOL_PACKET_IMPORT_CONFIGURATION_H
#define TOOL_PACKET_IMPORT_CONFIGURATION_H

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace tool {

// What the data packets that follow a configuration hold.
enum class ImportedData {
    Records,
    History,
    Attachments,
    Nothing,  // import_data is missing or names none of them: the importer imports nothing
};

// The configuration that an importer has after a sequence of configuration packets: the items of
// the last packet, and the reference mappings of all of them. All texts are UTF-8.
class ImportConfiguration {
  public:
    // Takes over a configuration packet, read by the importer's own parser. Throws SourceError,
    // which names the packet as `name`, when it is not well-formed; the configuration is then as it
    // was.
    void Apply(const std::string& packet, const std::string& name);

    // False until a packet was applied.
    bool Received() const { return m_received; }

    ImportedData Data() const { return m_data; }
    const std::string& ImportData() const { return m_importData; }
    const std::string& RecordType() const { return m_recordType; }
    const std::string& OriginalId() const { return m_originalId; }
    const std::string& DuplicateId() const { return m_duplicateId; }
    bool ImportState() const { return m_importState; }
    bool UpdateRecord() const { return m_updateRecord; }
    bool ReplaceRefList() const { return m_replaceRefList; }
    bool UpdateInsert() const { return m_updateInsert; }

    // True when data packets create the records that they hold, false when they add to others.
    bool CreatesRecords() const { return m_data == ImportedData::Records && !m_updateRecord; }

    // Target field to the field of the referenced type that the source's values are searched in.
    const std::map<std::string, std::string>& Mapping() const { return m_mapping; }

    // One packet that gives a new importer this configuration.
    std::string ToPacket() const;

    // A hash (SHA-256, hexadecimal) of all that steers the import of a data packet. Mappings of
    // fields for which `isField` is false are left out: they come from configurations of other
    // record types and must not make the same work look like another.
    std::string Fingerprint(const std::function<bool(std::string_view)>& isField) const;

  private:
    std::string ItemElements() const;

    bool m_received = false;
    std::string m_importData;
    ImportedData m_data = ImportedData::Nothing;
    std::string m_recordType;
    std::string m_originalId;
    std::string m_duplicateId;
    bool m_importState = false;
    bool m_updateRecord = false;
    bool m_replaceRefList = false;
    bool m_updateInsert = false;
    std::map<std::string, std::string> m_mapping;
};

}  // namespace tool

#endif
