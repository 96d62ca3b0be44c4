// Things of which one is in force at a time, such as shaders: a nested scope puts back what was in force
// around it.
#pragma once

#include "logging/Log.h"
#include "util/Failures.h"

#include <cstddef>
#include <exception>
#include <stack>
#include <vector>

namespace util
{
class AbstractBinder
{
public:
    virtual ~AbstractBinder() noexcept(false) = default;

protected:
    AbstractBinder() = default;

    virtual void BindImpl() const = 0;
    virtual void UnbindImpl() const = 0;
};

// The base of T. All objects of one T share one stack.
template<typename T>
class StackedBind : public AbstractBinder
{
public:
    /// In force until Unbind, or until another one is bound on top.
    /// @throws BadCoderException  when a hundred are bound
    void Bind() const
    {
        CODE_ASSERT(s_stack.size() < 100);
        if (!s_stack.empty() && !s_skipUnbinds)
            s_stack.top()->UnbindImpl();
        s_stack.push(this);
        BindImpl();
    }

    /// Puts back what was in force at Bind.
    /// @throws BadCoderException  when this is not the one bound last
    void Unbind() const
    {
        CODE_ASSERT(!s_stack.empty());
        CODE_ASSERT(s_stack.top() == this);
        s_stack.pop();
        if (s_stack.empty())
        {
            UnbindImpl();
            return;
        }
        if (!s_skipUnbinds)
            UnbindImpl();
        s_stack.top()->BindImpl();
    }

    static size_t GetBoundCount() { return s_stack.size(); }

    /// Whether going from one straight to another needs no unbinding in between.
    static inline bool s_skipUnbinds = false;

private:
    // A vector keeps its memory: nothing is allocated once it has been as deep.
    static inline std::stack<const StackedBind*, std::vector<const StackedBind*>> s_stack;
};

// Bound for a scope, which may also be left by an exception.
template<typename T>
class BindScope
{
public:
    explicit BindScope(const T& bound)
        : m_bound(bound)
        , m_exceptions(std::uncaught_exceptions())
        , m_depth(T::GetBoundCount())
    {
        try
        {
            m_bound.Bind();
        }
        catch (...)
        {
            if (T::GetBoundCount() > m_depth)
                UnbindContained();
            throw;
        }
    }
    ~BindScope() noexcept(false)
    {
        // A second exception on the way would end the program.
        if (std::uncaught_exceptions() > m_exceptions)
            UnbindContained();
        else
            m_bound.Unbind();
    }
    BindScope(const BindScope&) = delete;
    BindScope& operator=(const BindScope&) = delete;

private:
    void UnbindContained() const
    {
        try
        {
            m_bound.Unbind();
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogError, e.what());
        }
    }

    const T& m_bound;
    int m_exceptions; // in flight when the scope was entered
    size_t m_depth;
};
}
