// A registry of all living instances of a class.
#pragma once

#include "util/HashSet.h"
#include "util/VectorPOD.h"

namespace util
{
template<typename T>
class ClassTracker
{
public:
    /// A copy of all current instances, in no meaningful order. Instances may be added during a walk
    /// over it; one destroyed meanwhile is not detected.
    static VectorPOD<T*> GetAllClassInstances()
    {
        VectorPOD<T*> all;
        GetAllClassInstances(all);
        return all;
    }
    /// The same, in the memory that all has already.
    static void GetAllClassInstances(VectorPOD<T*>& all)
    {
        all.clear();
        all.reserve(Instances().size());
        for (ClassTracker* tracker : Instances())
            all.append(static_cast<T*>(tracker));
    }

    /// Whether p is in the registry. p may point at an object that is gone.
    static bool IsClassInstance(T* p) { return Instances().count(p) != 0; }

    static size_t GetClassInstanceCount() { return Instances().size(); }

protected:
    ClassTracker() { Instances().insert(this); }
    ClassTracker(const ClassTracker&) { Instances().insert(this); }
    ClassTracker& operator=(const ClassTracker&) { return *this; }
    virtual ~ClassTracker() noexcept(false) { Instances().erase(this); }

private:
    static HashSet<ClassTracker*>& Instances()
    {
        static HashSet<ClassTracker*>* s_instances = new HashSet<ClassTracker*>;
        return *s_instances;
    }
};
}
