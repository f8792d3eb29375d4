#include "tool/load/source_importers.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace tool {

namespace {

// Waiting records of a few types may take turns; each change of the configuration costs as much as
// some records.
constexpr std::size_t kMostImporters = 8;

}  // namespace

SourceImporters::SourceImporters(AdPtr<recorddb::Session> session, RecordGroup& group)
    : m_session(std::move(session)), m_group(group) {}

AtomicImport::Result SourceImporters::Import(const LoadedSource& source, std::string_view packet) {
    return AtomicImport(m_session, ImporterFor(source), m_group)
        .Import(packet, source.configuration.Data());
}

RecordImporter& SourceImporters::ImporterFor(const LoadedSource& source) {
    const auto found =
        std::find_if(m_importers.begin(), m_importers.end(), [&source](const Configured& one) {
            return one.isGuarded == source.isGuarded &&
                   one.configuration == source.configurationPacket;
        });
    if (found != m_importers.end()) {
        return *found->importer;
    }
    if (m_importers.size() == kMostImporters) {
        m_importers.erase(m_importers.begin());
    }
    auto importer = std::make_unique<RecordImporter>(m_session);
    importer->SetGuarded(source.isGuarded);
    // It was accepted when the source was begun, so only memory can be missing.
    if (!importer->Configure(source.configuration).empty()) {
        throw std::bad_alloc();
    }
    m_importers.push_back({source.configurationPacket, source.isGuarded, std::move(importer)});
    return *m_importers.back().importer;
}

}  // namespace tool
