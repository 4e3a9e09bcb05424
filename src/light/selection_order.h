// The order that a selection sort leaves, without its quadratic cost.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <queue>
#include <vector>

namespace k2k {

// The sort in question looks for the best of the rest, where a later one must be strictly better, and exchanges it with
// the first of the rest. The exchange moves equal items past each other, so the order is that of no other sort, and it
// is part of the result. Returns the items' old positions in their new order.
//
// Per class of equal keys a heap holds the positions where its items stand. A step takes the first position of the best
// class that is left, and the item that stood at the front moves there. Entries of items that moved on are skipped.
template <typename Key, typename Less>
std::vector<size_t> SelectionOrder(const std::vector<Key>& keys, Less less) {
    using PositionHeap = std::priority_queue<size_t, std::vector<size_t>, std::greater<>>;
    const size_t count = keys.size();
    std::vector<size_t> order(count);
    std::iota(order.begin(), order.end(), size_t{0});

    std::vector<size_t> ranked = order;
    std::sort(ranked.begin(), ranked.end(), [&](size_t a, size_t b) {
        if (less(keys[a], keys[b])) return true;
        return !less(keys[b], keys[a]) && a < b;
    });
    std::vector<size_t> classOf(count);
    std::vector<PositionHeap> standing;
    for (size_t i = 0; i < count; i++) {
        if (i == 0 || less(keys[ranked[i - 1]], keys[ranked[i]])) standing.emplace_back();
        classOf[ranked[i]] = standing.size() - 1;
        standing.back().push(ranked[i]);
    }

    for (size_t front = 0; front < count; front++) {
        const size_t best = classOf[ranked[front]];
        PositionHeap& positions = standing[best];
        while (positions.top() < front || classOf[order[positions.top()]] != best) positions.pop();
        const size_t found = positions.top();
        positions.pop();
        if (found == front) continue;
        std::swap(order[front], order[found]);
        standing[classOf[order[found]]].push(found);
    }
    return order;
}

}  // namespace k2k
