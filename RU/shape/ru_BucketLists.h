#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

/// A list of items for each bucket of an image. Lists are gathered in any order of the buckets, and then laid out one
/// behind the other, as most of them are short or empty.
template <class Item>
class ru_BucketLists
{
public:
    void clear() { *this = ru_BucketLists(); }
    void add(int64_t bucket, const Item& item) { gathered_.emplace_back(bucket, item); }

    /// Lays out what was added; lists keep its order.
    void layOut(int64_t buckets)
    {
        if (gathered_.empty())
            return;
        ends_.assign(static_cast<size_t>(buckets + 1), 0); // one further on: where the list begins, at first
        for (const auto& [bucket, item] : gathered_)
            ++ends_[static_cast<size_t>(bucket + 1)];
        for (size_t i = 1; i < ends_.size(); ++i)
            ends_[i] += ends_[i - 1];
        items_.resize(gathered_.size());
        for (const auto& [bucket, item] : gathered_)
            items_[static_cast<size_t>(ends_[static_cast<size_t>(bucket)]++)] = item;
        gathered_ = {};
    }

    std::span<const Item> operator[](int64_t bucket) const
    {
        if (ends_.empty())
            return {};
        const int64_t begin = bucket > 0 ? ends_[static_cast<size_t>(bucket - 1)] : 0;
        const int64_t end = ends_[static_cast<size_t>(bucket)];
        return {items_.data() + begin, static_cast<size_t>(end - begin)};
    }

private:
    std::vector<std::pair<int64_t, Item>> gathered_;
    std::vector<int64_t> ends_; ///< of the lists
    std::vector<Item> items_;
};
