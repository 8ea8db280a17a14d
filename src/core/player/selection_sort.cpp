#include "selection_sort.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

namespace velaro::player {

std::vector<int32_t> collationRanks(const platform::TextCollation& c, const std::vector<std::string>& texts) {
    // One key per distinct text: lists repeat artists a lot.
    std::unordered_map<std::string_view, int32_t> keyOf;
    keyOf.reserve(texts.size());
    std::vector<std::string> keys;
    std::vector<int32_t> which(texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        auto [it, fresh] = keyOf.try_emplace(texts[i], static_cast<int32_t>(keys.size()));
        if (fresh) keys.push_back(c.sortKey(texts[i]));
        which[i] = it->second;
    }
    std::vector<int32_t> order(keys.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int32_t a, int32_t b) { return keys[a] < keys[b]; });
    std::vector<int32_t> rankOfKey(keys.size());
    int32_t rank = 0;
    for (size_t k = 0; k < order.size(); ++k) {
        if (k > 0 && keys[order[k]] != keys[order[k - 1]]) ++rank;
        rankOfKey[order[k]] = rank;
    }
    std::vector<int32_t> ranks(texts.size());
    for (size_t i = 0; i < texts.size(); ++i) ranks[i] = rankOfKey[which[i]];
    return ranks;
}

namespace {

// Position of the smallest value over a suffix, the lowest position on ties.
class FirstMinTree {
public:
    explicit FirstMinTree(const std::vector<int64_t>& v) : n_(1), values_(v) {
        while (n_ < v.size()) n_ *= 2;
        tree_.assign(2 * n_, -1);
        for (size_t i = 0; i < v.size(); ++i) tree_[n_ + i] = static_cast<int32_t>(i);
        for (size_t i = n_ - 1; i >= 1; --i) tree_[i] = better(tree_[2 * i], tree_[2 * i + 1]);
    }
    void set(size_t pos, int64_t value) {
        values_[pos] = value;
        for (size_t i = (n_ + pos) / 2; i >= 1; i /= 2) tree_[i] = better(tree_[2 * i], tree_[2 * i + 1]);
    }
    // First position of the smallest value in [from, size).
    int32_t firstMin(size_t from) const {
        int32_t best = -1;
        size_t lo = from + n_, hi = values_.size() + n_;
        std::vector<int32_t> right;
        while (lo < hi) {
            if (lo & 1) best = better(best, tree_[lo++]);
            if (hi & 1) right.push_back(tree_[--hi]);
            lo /= 2;
            hi /= 2;
        }
        for (auto it = right.rbegin(); it != right.rend(); ++it) best = better(best, *it);
        return best;
    }

private:
    int32_t better(int32_t a, int32_t b) const {
        if (a < 0) return b;
        if (b < 0) return a;
        if (values_[b] < values_[a]) return b;
        if (values_[a] < values_[b]) return a;
        return std::min(a, b);
    }
    size_t n_;
    std::vector<int64_t> values_;
    std::vector<int32_t> tree_;
};

}  // namespace

SelectionSteps selectionSortSteps(std::vector<int64_t> keys, int64_t majorDivisor) {
    SelectionSteps s;
    const size_t n = keys.size();
    if (n == 0) return s;
    FirstMinTree all(keys);
    std::vector<int64_t> majors;
    if (majorDivisor > 0) {
        majors.resize(n);
        for (size_t i = 0; i < n; ++i) majors[i] = keys[i] / majorDivisor;
    }
    FirstMinTree major(majorDivisor > 0 ? majors : std::vector<int64_t>{0});
    s.pick.resize(n);
    if (majorDivisor > 0) s.firstOfMajor.resize(n);
    for (size_t i = 0; i < n; ++i) {
        const int32_t m = all.firstMin(i);
        s.pick[i] = m;
        if (majorDivisor > 0) s.firstOfMajor[i] = major.firstMin(i);
        if (static_cast<size_t>(m) != i) {
            std::swap(keys[i], keys[m]);
            all.set(i, keys[i]);
            all.set(m, keys[m]);
            if (majorDivisor > 0) {
                std::swap(majors[i], majors[m]);
                major.set(i, majors[i]);
                major.set(m, majors[m]);
            }
        }
    }
    return s;
}

}  // namespace velaro::player
