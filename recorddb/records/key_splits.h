#ifndef RECORDDB_RECORDS_KEY_SPLITS_H
#define RECORDDB_RECORDS_KEY_SPLITS_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace recorddb {

// The ways in which a text can be cut at single blanks into a number of parts, none of them empty.
// The parts of a key are joined by blanks and may have blanks in them, so all ways must be tried.
// Texts that can be cut in more ways than anyone would mean give the first of them only.
std::vector<std::vector<std::string_view>> KeySplits(std::string_view text, std::size_t parts);

}  // namespace recorddb

#endif
