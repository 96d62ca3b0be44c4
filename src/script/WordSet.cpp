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
    const auto added = m_index.emplace(word, m_words.size());
    if (added.second)
    {
        m_words.emplace_back();
        m_words.back().text = &added.first->first;
    }
    const size_t index = added.first->second;
    m_words[index].positions.push_back(position);
    m_items.emplace_back(position, index);
}

WordSet::WordSet(const WordPositions& positions, size_t begin, size_t end)
    : m_positions(positions)
    , m_begin(begin)
    , m_end(end)
{
}

size_t WordSet::Find(const util::String& word, size_t from) const
{
    const auto it = m_positions.m_index.find(word);
    if (it == m_positions.m_index.end())
        return m_end;
    return FindIn(m_positions.m_words[it->second].positions, from, m_end);
}

std::vector<const util::String*> WordSet::GetWords() const
{
    std::vector<WordPositions::Word>& words = m_positions.m_words;
    const auto& items = m_positions.m_items;
    const auto begin =
        std::lower_bound(items.begin(), items.end(), std::make_pair(m_begin, size_t(0)));
    const auto end = std::lower_bound(begin, items.end(), std::make_pair(m_end, size_t(0)));

    std::vector<const util::String*> present;
    if (static_cast<size_t>(end - begin) > words.size())
    {
        for (const WordPositions::Word& word : words)
            if (FindIn(word.positions, m_begin, m_end) != m_end)
                present.push_back(word.text);
        return present;
    }
    ++m_positions.m_round;
    for (auto it = begin; it != end; ++it)
    {
        WordPositions::Word& word = words[it->second];
        if (word.round == m_positions.m_round)
            continue;
        word.round = m_positions.m_round;
        present.push_back(word.text);
    }
    return present;
}
}
