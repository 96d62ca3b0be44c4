#include "util/Callback.h"

namespace util
{
Callback::Callback(boost::function<void()> function, Pointee* owner)
    : m_function(std::move(function))
    , m_owner(owner)
{
}

Callback::~Callback() = default;

bool Callback::operator()() const
{
    LockPtr<Pointee> owner(m_owner);
    if (!owner)
        return false;
    m_function();
    return true;
}

namespace
{
unsigned long s_destroyedSets = 0;
}

AbstractCallbackSet::~AbstractCallbackSet() noexcept(false)
{
    ++s_destroyedSets;
}

void AbstractCallbackSet::FlushCallbackSets()
{
    // A dead callback may hold the last handle to an object with sets of its own: once a set has
    // gone during the walk, each further one is looked up before it is used.
    const unsigned long destroyedBefore = s_destroyedSets;
    // Frames run this for good: its list keeps its memory. It is taken out for the walk, which may
    // come back here.
    static VectorPOD<AbstractCallbackSet*>* s_spare = new VectorPOD<AbstractCallbackSet*>;
    VectorPOD<AbstractCallbackSet*> sets;
    sets.swap(*s_spare);
    GetAllClassInstances(sets);
    for (AbstractCallbackSet* set : sets)
        if (s_destroyedSets == destroyedBefore || IsClassInstance(set))
            set->Flush();
    sets.swap(*s_spare);
}

void CallbackSet::Add(CallbackPtr callback)
{
    if (!callback)
        return;
    if (!m_callbacks)
        m_callbacks = std::make_unique<std::list<CallbackPtr>>();
    m_callbacks->push_back(callback);
}

void CallbackSet::Remove(CallbackPtr callback) const
{
    if (!m_callbacks)
        return;
    for (auto it = m_callbacks->begin(); it != m_callbacks->end(); ++it)
        if (*it == callback)
        {
            m_callbacks->erase(it);
            return;
        }
}

void CallbackSet::CallAll() const
{
    if (!m_callbacks || m_callbacks->empty())
        return;
    // A callback may change the set, or destroy it: the pass walks a copy.
    const std::list<CallbackPtr> copy = *m_callbacks;
    try
    {
        for (const CallbackPtr& callback : copy)
            (*callback)();
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning,
            std::string("Exception caught in CallbackSet::CallAll: ") + e.what());
    }
}

void CallbackSet::Flush() const
{
    if (!m_callbacks)
        return;
    internal::FlushDead(*m_callbacks, [this](const CallbackPtr& callback) { Remove(callback); });
}

void InterpolatorBase::UpdateAll()
{
    for (InterpolatorBase* interpolator : GetAllClassInstances())
        interpolator->Update();
}
}
