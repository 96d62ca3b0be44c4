// A vector for plain data: elements are neither constructed nor destroyed, and grow by memcpy.
#pragma once

#include "util/Failures.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace util
{
template<typename T>
class VectorPOD
{
    static_assert(std::is_trivially_destructible<T>::value, "elements are never destroyed");

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    VectorPOD() = default;
    /// Elements come as they come: they are not initialised.
    explicit VectorPOD(size_t size) { resize(size); }
    VectorPOD(const VectorPOD& o) { *this = o; }
    VectorPOD(VectorPOD&& o) noexcept { swap(o); }
    ~VectorPOD() { std::free(m_begin); }

    VectorPOD& operator=(const VectorPOD& o)
    {
        if (this != &o)
        {
            resize(o.size());
            if (!o.empty())
                std::memcpy(static_cast<void*>(m_begin), o.m_begin, o.size() * sizeof(T));
        }
        return *this;
    }
    VectorPOD& operator=(VectorPOD&& o) noexcept
    {
        swap(o);
        return *this;
    }

    void append(const T& value)
    {
        if (m_end == m_capacityEnd)
        {
            const T copy = value; // it may lie in our own block
            private_reserve(size() + 1);
            *m_end++ = copy;
            return;
        }
        *m_end++ = value;
    }
    void push_back(const T& value) { append(value); }

    void pop_back()
    {
        CODE_ASSERT(!empty());
        --m_end;
    }

    /// New elements are not initialised.
    void resize(size_t n)
    {
        if (n > capacity())
            reserve(n);
        m_end = m_begin + n;
    }

    /// Room for n elements in all: exactly that many, when there is less.
    /// @throws std::bad_alloc
    void reserve(size_t n)
    {
        if (n <= capacity())
            return;
        const size_t count = size();
        T* block = alloc(n);
        if (count)
            std::memcpy(static_cast<void*>(block), m_begin, count * sizeof(T));
        std::free(m_begin);
        m_begin = block;
        m_end = block + count;
        m_capacityEnd = block + n;
    }

    T& operator[](size_t i)
    {
        CODE_ASSERT(i < size());
        return m_begin[i];
    }
    const T& operator[](size_t i) const
    {
        CODE_ASSERT(i < size());
        return m_begin[i];
    }

    T* begin() { return m_begin; }
    T* end() { return m_end; }
    const T* begin() const { return m_begin; }
    const T* end() const { return m_end; }
    T* data() { return m_begin; }
    const T* data() const { return m_begin; }
    T& back() { return (*this)[size() - 1]; }
    const T& back() const { return (*this)[size() - 1]; }
    size_t size() const { return m_end - m_begin; }
    size_t capacity() const { return m_capacityEnd - m_begin; }
    bool empty() const { return m_begin == m_end; }
    /// Keeps the capacity.
    void clear() { m_end = m_begin; }

    void swap(VectorPOD& o) noexcept
    {
        std::swap(m_begin, o.m_begin);
        std::swap(m_end, o.m_end);
        std::swap(m_capacityEnd, o.m_capacityEnd);
    }

private:
    void private_reserve(size_t needed)
    {
        if (capacity() < needed)
            reserve(needed * 2);
    }

    static T* alloc(size_t n)
    {
        if (n == 0)
            return nullptr;
        if (n > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T))
            QUIB_THROW(std::bad_alloc());
        void* block = std::malloc(n * sizeof(T));
        if (!block)
            QUIB_THROW(std::bad_alloc());
        return static_cast<T*>(block);
    }

    T* m_begin = nullptr;
    T* m_end = nullptr;
    T* m_capacityEnd = nullptr;
};
}
