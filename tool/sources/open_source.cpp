#include "tool/sources/open_source.h"

#include <utility>

#include "tool/io/source_error.h"
#include "tool/sources/xml/packet_reader.h"

namespace tool {

std::unique_ptr<RecordSource> OpenRecordSource(const SourceFile& file, SourceReading reading) {
    ReaderOptions options;
    options.recordLimit = reading.limits.size;
    options.maxDepth = reading.limits.depth;
    options.unseen = std::move(reading.unseen);
    options.frame = std::move(reading.frame);
    auto reader = std::make_unique<PacketReader>(file.Read(), std::move(options));
    if (!reader->IsPacket()) {
        throw SourceError(file.Name() +
                          ": this is no packet: a packet is XML with a <configuration> or with "
                          "<record> elements; leave the file out, or see that it is the one "
                          "you mean");
    }
    return reader;
}

}  // namespace tool
