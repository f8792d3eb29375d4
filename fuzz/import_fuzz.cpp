#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "example_database.h"
#include "input.h"
#include "platform/foundation/utf.h"
#include "ztimporter/adimporter.h"

namespace {

using fuzz::Expect;

// The configurations that the last byte chooses from. The packets may bring others.
constexpr std::array<std::u16string_view, 8> kConfigurations = {
    u"",
    u"<import_data name=\"record\"/><record_type name=\"keyword\"/><original_id name=\"name\"/>",
    u"<import_data name=\"record\"/><record_type name=\"bug\"/><original_id name=\"source_id\"/>"
    u"<duplicate_id name=\"duplicate_of\"/><importstate name=\"TRUE\"/>"
    u"<record_reference_mapping_list><m target_field=\"owner\" reference_field=\"email\"/>"
    u"<m target_field=\"reporter\" reference_field=\"email\"/></record_reference_mapping_list>",
    u"<import_data name=\"record\"/><record_type name=\"bug\"/><original_id name=\"source_id\"/>"
    u"<duplicate_id name=\"duplicate_of\"/><updaterecord name=\"TRUE\"/>"
    u"<updateinsert name=\"TRUE\"/><replacereflist name=\"TRUE\"/>",
    u"<import_data name=\"record\"/><record_type name=\"bug\"/><original_id name=\"source_id\"/>"
    u"<updaterecord name=\"TRUE\"/>",
    u"<import_data name=\"history\"/><record_type name=\"bug\"/><original_id name=\"source_id\"/>",
    u"<import_data name=\"attachments\"/><record_type name=\"bug\"/>"
    u"<original_id name=\"source_id\"/>",
    u"<import_data name=\"record\"/><record_type name=\"berth\"/><original_id name=\"pier\"/>"
    u"<updaterecord name=\"TRUE\"/><updateinsert name=\"TRUE\"/>"};
constexpr std::uint8_t kKeywords = 1;

constexpr const char* kProbe = "a keyword that no input names";

// A packet that was ended by an exception leaves its history entries behind, which the next data
// packet would drop without releasing them. This class releases them.
class Importer : public AdImporter {
  public:
    Importer() { SetSession(AdSessionPtr(fuzz::ExampleDatabase::Instance().Session().GetPtr())); }
    ~Importer() override { DiscardHistory(); }

    Obx_String ImportText(std::u16string text) {
        DiscardHistory();
        return Import(reinterpret_cast<const unsigned short*>(text.c_str()));
    }

    Obx_String Configure(std::u16string_view items) {
        return ImportText(u"<configuration>" + std::u16string(items) + u"</configuration>");
    }
};

// The packets of an input: its texts between NULs; in units of UTF-16, which need not be valid,
// when the first byte says so.
std::u16string PacketsOf(std::string_view text) {
    constexpr char unitsFollow = 'U';
    if (!text.starts_with(unitsFollow)) {
        return Utf8ToUtf16Lossy(text);
    }
    text.remove_prefix(1);
    std::u16string units(text.size() / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), text.data(), units.size() * sizeof(char16_t));
    return units;
}

bool HoldsOneRecord(std::u16string_view packet) {
    const std::size_t first = packet.find(u"<record>");
    return first != packet.npos && packet.find(u"<record>", first + 1) == packet.npos;
}

// Nothing of a keyword is written before all of it has been accepted.
void ImportKeyword(Importer& importer, const std::u16string& packet) {
    fuzz::ExampleDatabase& database = fuzz::ExampleDatabase::Instance();
    const std::string before = database.Contents();
    const bool refused = !importer.ImportText(packet).IsEmpty();
    Expect(!refused || database.Contents() == before, "a refused record leaves nothing");
}

void ImportPackets(std::u16string_view packets, std::uint8_t choice) {
    Importer importer;
    const std::u16string_view items = kConfigurations[choice];
    Expect(items.empty() || importer.Configure(items).IsEmpty(), "the configuration is good");
    bool configuredHere = choice == kKeywords;
    while (!packets.empty()) {
        const std::size_t end = std::min(packets.find(u'\0'), packets.size());
        const std::u16string packet(packets.substr(0, end));
        packets.remove_prefix(std::min(end + 1, packets.size()));
        configuredHere = configuredHere && packet.find(u"configuration") == packet.npos;
        if (configuredHere && HoldsOneRecord(packet)) {
            ImportKeyword(importer, packet);
        } else {
            importer.ImportText(packet);
        }
    }
}

void ExpectUsableSession() {
    fuzz::ExampleDatabase& database = fuzz::ExampleDatabase::Instance();
    Expect(!database.Session()->Failure(), "no packet makes the database fail");
    if (database.HasKeyword(kProbe)) {
        return;
    }
    Importer importer;
    Expect(importer.Configure(kConfigurations[kKeywords]).IsEmpty(),
           "the session still configures");
    const std::u16string packet =
        u"<record><field name=\"name\">" + Utf8ToUtf16Lossy(kProbe) + u"</field></record>";
    Expect(importer.ImportText(packet).IsEmpty() && database.HasKeyword(kProbe),
           "the session still imports");
}

}  // namespace

// Whatever the packets are, Import returns, the session remains usable, and a refused record leaves
// nothing in the database.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const auto choice = static_cast<std::uint8_t>(input.TakeChoice() % kConfigurations.size());
    const auto transaction = fuzz::ExampleDatabase::Instance().Session()->BeginTransaction();
    ImportPackets(PacketsOf(input.Text()), choice);
    ExpectUsableSession();
    transaction->Rollback();
    return 0;
}
