#pragma once
// The playlist's sorts are selection sorts: for each position from the first,
// the first strictly smallest item of the rest is swapped in. The outcome
// (ties included) depends only on which position each step picks, so it is
// computed here in n log n from collation ranks and replayed by the caller.

#include <cstdint>
#include <string>
#include <vector>

#include "../platform/text_collation.h"

namespace velaro::player {

// Ranks of the texts under the collation: equal ranks exactly for texts that compare equal.
std::vector<int32_t> collationRanks(const platform::TextCollation& c, const std::vector<std::string>& texts);

// The positions a selection sort on `keys` picks, one per step: at step i the
// first position at or after i holding the smallest key, then keys[i] and
// keys[pick] swap. `keys` ends sorted. With `firstOfMajor`, also the first
// position at or after i whose major key (key / majorDivisor) is smallest.
struct SelectionSteps {
    std::vector<int32_t> pick;
    std::vector<int32_t> firstOfMajor;
};
SelectionSteps selectionSortSteps(std::vector<int64_t> keys, int64_t majorDivisor = 0);

}  // namespace velaro::player
