// Walks through objects that lie scattered, or are more than the caches hold.
#pragma once

#include <cstddef>

namespace physics
{
/// Calls visit for the bodies of a list of pointers or handles, in order, and has those further on come
/// from memory meanwhile. The list must not change.
template<typename List, typename Visit>
void ForEachAhead(const List& list, Visit visit)
{
    const size_t ahead = 16;
    const auto* const bodies = list.data();
    const size_t n = list.size();
    for (size_t i = 0; i < n; ++i)
    {
        if (i + ahead < n)
            bodies[i + ahead]->Prefetch();
        visit(*bodies[i]);
    }
}
}
