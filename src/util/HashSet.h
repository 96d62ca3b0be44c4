// A chained hash set with a prime number of buckets. Iteration goes by bucket, then by position in
// the bucket: the same for the same insertions of the same keys, and with pointers as keys only
// within one run.
#pragma once

#include "util/Failures.h"
#include "util/Hash.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace util
{
namespace internal
{
/// 3 for 2 or below, else the smallest odd number from capacity on without an odd divisor.
inline size_t BucketCountFor(size_t capacity)
{
    if (capacity <= 2)
        return 3;
    size_t n = capacity | 1;
    for (;; n += 2)
    {
        bool isPrime = true;
        for (size_t d = 3; d * d <= n; d += 2)
            if (n % d == 0)
            {
                isPrime = false;
                break;
            }
        if (isPrime)
            return n;
    }
}

// What HashSet and HashMap share. KeyOf picks the key of an element.
template<typename Element, typename Key, typename Hasher, typename KeyOf>
class HashTable
{
    using Table = std::vector<std::vector<Element>>;

    template<typename TablePtr, typename Ref>
    class Iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Element;
        using difference_type = std::ptrdiff_t;
        using pointer = std::remove_reference_t<Ref>*;
        using reference = Ref;

        Iterator(TablePtr table, size_t bucket, size_t index)
            : m_table(table)
            , m_bucket(bucket)
            , m_index(index)
        {
        }
        template<typename T2, typename R2>
        Iterator(const Iterator<T2, R2>& o)
            : m_table(o.m_table)
            , m_bucket(o.m_bucket)
            , m_index(o.m_index)
        {
        }

        Ref operator*() const { return (*m_table)[m_bucket][m_index]; }
        pointer operator->() const { return &**this; }
        Iterator& operator++()
        {
            ++m_index;
            SkipEmpty();
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator old = *this;
            ++*this;
            return old;
        }
        friend bool operator==(const Iterator& lhs, const Iterator& rhs)
        {
            // Comparing iterators of two tables is an error.
            if (__builtin_expect(lhs.m_table != rhs.m_table, 0))
                ::AssertionFailed("&lhs.m_table == &rhs.m_table", true, false, __PRETTY_FUNCTION__,
                                  __FILE__, __LINE__);
            return lhs.m_bucket == rhs.m_bucket && lhs.m_index == rhs.m_index;
        }
        friend bool operator!=(const Iterator& lhs, const Iterator& rhs) { return !(lhs == rhs); }

        void SkipEmpty()
        {
            while (m_bucket < m_table->size() && m_index >= (*m_table)[m_bucket].size())
            {
                ++m_bucket;
                m_index = 0;
            }
        }

    private:
        template<typename T2, typename R2>
        friend class Iterator;

        TablePtr m_table;
        size_t m_bucket;
        size_t m_index;
    };

public:
    using const_iterator = Iterator<const Table*, const Element&>;
    using iterator = Iterator<Table*, Element&>;

    explicit HashTable(size_t capacity)
        : m_table(BucketCountFor(capacity))
    {
    }

    const_iterator begin() const
    {
        const_iterator it(&m_table, 0, 0);
        it.SkipEmpty();
        return it;
    }
    const_iterator end() const { return const_iterator(&m_table, m_table.size(), 0); }
    const_iterator find(const Key& key) const
    {
        const size_t bucket = BucketOf(key);
        const std::vector<Element>& elements = m_table[bucket];
        for (size_t i = 0; i < elements.size(); ++i)
            if (KeyOf()(elements[i]) == key)
                return const_iterator(&m_table, bucket, i);
        return end();
    }
    size_t count(const Key& key) const
    {
        for (const Element& e : m_table[BucketOf(key)])
            if (KeyOf()(e) == key)
                return 1;
        return 0;
    }
    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    size_t GetBucketCount() const { return m_table.size(); }

    /// Keeps the buckets.
    void clear()
    {
        for (std::vector<Element>& bucket : m_table)
            bucket.clear();
        m_size = 0;
    }

    /// Never shrinks.
    void SetCapacity(unsigned long n)
    {
        if (m_table.size() >= n)
            return;
        Table grown(BucketCountFor(n));
        for (std::vector<Element>& bucket : m_table)
            for (Element& e : bucket)
                grown[m_hasher(KeyOf()(e)) % grown.size()].push_back(std::move(e));
        m_table.swap(grown);
    }

    /// The order in a bucket is not kept; iterators into that bucket become invalid.
    void erase(const Key& key)
    {
        std::vector<Element>& elements = m_table[BucketOf(key)];
        for (size_t i = 0; i < elements.size(); ++i)
            if (KeyOf()(elements[i]) == key)
            {
                // Out of the table before it dies: its destructor may look at this table.
                [[maybe_unused]] Element gone = std::move(elements[i]);
                if (i + 1 != elements.size())
                    elements[i] = std::move(elements.back());
                elements.pop_back();
                --m_size;
                return;
            }
    }

protected:
    size_t BucketOf(const Key& key) const { return m_hasher(key) % m_table.size(); }

    void CheckRehashNeed()
    {
        if (m_size >= m_table.size())
            SetCapacity(2 * m_table.size());
    }

    void Swap(HashTable& o)
    {
        m_table.swap(o.m_table);
        std::swap(m_size, o.m_size);
    }

    Hasher m_hasher;
    Table m_table;
    size_t m_size = 0;
};

template<typename T>
struct IdentityKey
{
    const T& operator()(const T& e) const { return e; }
};
template<typename P>
struct FirstKey
{
    const typename P::first_type& operator()(const P& p) const { return p.first; }
};
}

template<typename T, typename H = DefaultHasher<T>>
class HashSet : public internal::HashTable<T, T, H, internal::IdentityKey<T>>
{
    using Base = internal::HashTable<T, T, H, internal::IdentityKey<T>>;

public:
    explicit HashSet(unsigned long capacity = 3)
        : Base(capacity)
    {
    }

    /// Does nothing when an equal value is there, but for the check whether the table must grow.
    void insert(const T& value)
    {
        this->CheckRehashNeed();
        std::vector<T>& bucket = this->m_table[this->BucketOf(value)];
        for (const T& e : bucket)
            if (e == value)
                return;
        bucket.push_back(value);
        ++this->m_size;
    }

    void swap(HashSet& o) { this->Swap(o); }
};
}
