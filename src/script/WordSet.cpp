#include "script/WordSet.h"

#include <algorithm>

namespace script
{
namespace
{
size_t FindIn(const std::vector<size_t>& positions, size_t from, size_t end)
{
    const auto it = std::lower_bound(positions.begin(), positions.end(), from);
    return it == positions.end() || *it >= end ? end : *it;
}
}

void WordPositions::Add(const util::String& word, size_t position)
{
    m_positions[word].push_back(position);
}

WordSet::WordSet(const WordPositions& positions, size_t begin, size_t end)
    : m_positions(positions)
    , m_begin(begin)
    , m_end(end)
{
}

size_t WordSet::Find(const util::String& word, size_t from) const
{
    const auto it = m_positions.m_positions.find(word);
    return it == m_positions.m_positions.end() ? m_end : FindIn(it->second, from, m_end);
}

std::vector<const util::String*> WordSet::GetWords() const
{
    std::vector<const util::String*> words;
    for (const auto& entry : m_positions.m_positions)
        if (FindIn(entry.second, m_begin, m_end) != m_end)
            words.push_back(&entry.first);
    return words;
}
}
