// The words by which the infix of a statement is found.
#pragma once

#include "util/String.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace script
{
// The names among the items of one statement that may be words of an infix, and where they stand. Made
// once for a statement, so that a chain of n operands, each a statement of its own, isn't gone through
// n times.
class WordPositions
{
public:
    /// In rising order of position.
    void Add(const util::String& word, size_t position);
    bool empty() const { return m_items.empty(); }

private:
    friend class WordSet;

    struct Word
    {
        const util::String* text;
        std::vector<size_t> positions;
        unsigned round = 0; // of GetWords in which it was met last
    };

    std::unordered_map<util::String, size_t> m_index; // into m_words
    mutable std::vector<Word> m_words;
    std::vector<std::pair<size_t, size_t>> m_items; // position and index into m_words
    mutable unsigned m_round = 0;
};

// The words of the items from begin to before end. The positions must outlive it.
class WordSet
{
public:
    WordSet(const WordPositions& positions, size_t begin, size_t end);

    bool Contains(const util::String& word) const { return Find(word, m_begin) != m_end; }
    /// The first position of the word from a position on; the end when there is none.
    size_t Find(const util::String& word, size_t from) const;
    /// Each word once, in no meaningful order. Costs a step or two for each item or, if these are fewer,
    /// for each word of the whole statement.
    std::vector<const util::String*> GetWords() const;

private:
    const WordPositions& m_positions;
    size_t m_begin, m_end;
};
}
