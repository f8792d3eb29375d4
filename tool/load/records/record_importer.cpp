#include "tool/load/records/record_importer.h"

#include <new>
#include <optional>
#include <utility>

#include "platform/foundation/utf.h"
#include "platform/messages/addiagnostic.h"
#include "tool/guarded/guarded_session.h"
#include "tool/guarded/guarded_text.h"
#include "tool/guarded/restored_traces.h"
#include "tool/process/memory_watch.h"

namespace tool {

namespace {

Obx_String ImportText(AdImporter& importer, const std::u16string& packet) {
    return importer.Import(reinterpret_cast<const unsigned short*>(packet.c_str()));
}

// Errors that come from exceptions begin with a line feed, and those of history end with one.
std::string ForPeople(Obx_String error) {
    error.TrimLeft();
    error.TrimRight();
    return error.ToUtf8();
}

}  // namespace

RecordImporter::RecordImporter(AdPtr<recorddb::Session> session)
    : m_session(std::move(session)), m_importer(MakeImporter()) {}

std::unique_ptr<AdImporter> RecordImporter::MakeImporter() const {
    auto importer = std::make_unique<AdImporter>();
    AdSessionPtr session(m_session.GetPtr());
    importer->SetSession(m_guarded ? OpenGuarded(std::move(session)) : std::move(session));
    return importer;
}

std::string RecordImporter::Configure(const ImportConfiguration& configuration) {
    std::u16string packet = Utf8ToUtf16Lossy(configuration.ToPacket());
    auto importer = MakeImporter();
    const std::uint64_t memoryFailures = MemoryFailures();
    const Obx_String error = ImportText(*importer, packet);
    if (MemoryFailures() != memoryFailures) {
        throw std::bad_alloc();
    }
    if (!error.IsEmpty()) {
        return ForPeople(error);
    }
    m_importer = std::move(importer);
    m_configuration = std::move(packet);
    return {};
}

void RecordImporter::SetGuarded(bool guarded) {
    if (guarded != m_guarded) {
        m_guarded = guarded;
        StartAnew();
    }
}

ImportOutcome RecordImporter::Import(std::string_view packet) {
    Utf8ToUtf16(packet, m_packet);
    std::optional<RestoredTraces> traces;
    if (m_guarded && AdDiagnostic::FlagSet(AdDiagnostic::kImportFlag)) {
        traces.emplace();
    }
    const recorddb::Statistics before = m_session->GetStatistics();
    ImportOutcome outcome;
    const Obx_String error = ImportText(*m_importer, m_packet);
    outcome.error = ForPeople(m_guarded ? Restored(error) : error);
    outcome.done = m_session->GetStatistics() - before;
    const Obx_String cause = m_session->TakeLastRefusal();
    if (outcome.Failed() && !cause.IsEmpty()) {
        outcome.error += " " + cause.ToUtf8();
    }
    if (outcome.Failed() || outcome.Skipped()) {
        StartAnew();
    }
    return outcome;
}

void RecordImporter::StartAnew() {
    m_importer = MakeImporter();
    // It was accepted before, so only memory can be missing. No record must be imported with a part
    // of it.
    if (!m_configuration.empty() && !ImportText(*m_importer, m_configuration).IsEmpty()) {
        throw std::bad_alloc();
    }
}

}  // namespace tool
