// The map to HashSet: pairs of key and value in the buckets.
#pragma once

#include "util/HashSet.h"

namespace util
{
template<typename K, typename V, typename H = DefaultHasher<K>>
class HashMap
    : public internal::HashTable<std::pair<K, V>, K, H, internal::FirstKey<std::pair<K, V>>>
{
    using Base = internal::HashTable<std::pair<K, V>, K, H, internal::FirstKey<std::pair<K, V>>>;

public:
    explicit HashMap(unsigned long capacity = 3)
        : Base(capacity)
    {
    }

    /// Inserts a default value for an unknown key.
    V& operator[](const K& key)
    {
        this->CheckRehashNeed();
        auto& bucket = this->m_table[this->BucketOf(key)];
        for (auto& e : bucket)
            if (e.first == key)
                return e.second;
        bucket.emplace_back(key, V());
        ++this->m_size;
        return bucket.back().second;
    }

    /// The value under the key, or null. Inserts nothing.
    const V* Find(const K& key) const
    {
        for (const auto& e : this->m_table[this->BucketOf(key)])
            if (e.first == key)
                return &e.second;
        return nullptr;
    }

    /// Does nothing when the key is there.
    void insert(const std::pair<K, V>& pair)
    {
        this->CheckRehashNeed();
        auto& bucket = this->m_table[this->BucketOf(pair.first)];
        for (const auto& e : bucket)
            if (e.first == pair.first)
                return;
        bucket.push_back(pair);
        ++this->m_size;
    }

    void swap(HashMap& o) { this->Swap(o); }
};
}
