// The one way in which long-lived services exist: created at first use, destroyed once, never back.
#pragma once

#include "util/Failures.h"
#include "util/SharedPtr.h"

#include <string>
#include <typeinfo>

namespace util
{
// A service derives from this in addition to its other bases, and last among them. The object is kept
// alive by its own static handle from inside its construction.
template<typename T>
class Singleton
{
public:
    /// Does nothing while the service lives.
    /// @throws BadCoderException  when it was destroyed before
    static void Create()
    {
        if (Instance())
            return;
        if (s_createCount != 0)
            QUIB_THROW(
                BadCoderException(std::string("Phoenix singleton detected: ") + typeid(T).name()));
        s_createCount = 1;
        QUIB_NEW T;
    }

    /// Creates the service at its first use.
    static T* GetInstancePtr()
    {
        if (__builtin_expect(!Instance(), 0))
            Create();
        return Instance().get();
    }

    /// Never creates it. False from the moment on at which its destructor begins.
    static bool Exists() { return Instance() && Instance()->GetHandle()->HasPtr(); }

    /// Harmless when already gone.
    static void Destroy()
    {
        if (Instance())
            Instance().Reset(nullptr);
    }

protected:
    // T is under construction, which is what the sanitizer would report: only its address is used.
    __attribute__((no_sanitize("vptr"))) Singleton()
    {
        SharedPtr<T>& s_instance = Instance();
        CODE_ASSERT(!s_instance);
        s_instance.Reset(static_cast<T*>(this));
    }
    ~Singleton() = default;

private:
    // Never destroyed: the process ends without static destructors touching a service.
    static SharedPtr<T>& Instance()
    {
        static SharedPtr<T>* s_instance = new SharedPtr<T>;
        return *s_instance;
    }

    static inline unsigned s_createCount = 0;
};
}
