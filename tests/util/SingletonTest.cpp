#include "util/Singleton.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace
{
int s_servicesMade = 0;

struct Service : util::Pointee, util::Singleton<Service>
{
    Service() { ++s_servicesMade; }
};
struct Phoenix : util::Pointee, util::Singleton<Phoenix>
{
};
struct MadeByHand : util::Pointee, util::Singleton<MadeByHand>
{
};
struct NeverMade : util::Pointee, util::Singleton<NeverMade>
{
};
struct LooksAtItself : util::Pointee, util::Singleton<LooksAtItself>
{
    LooksAtItself() { EXPECT_EQ(this, GetInstancePtr()); }
    ~LooksAtItself() override { s_existedAtItsEnd = Exists(); }
    static inline bool s_existedAtItsEnd = true;
};
}

TEST(Singleton, ComesIntoBeingAtItsFirstUse)
{
    EXPECT_EQ(0, s_servicesMade);
    EXPECT_FALSE(Service::Exists());
    Service* service = Service::GetInstancePtr();
    EXPECT_EQ(1, s_servicesMade);
    EXPECT_TRUE(Service::Exists());
    EXPECT_EQ(1u, service->GetHandle()->GetRefCount());
}

TEST(Singleton, CreatedASecondTimeStaysTheSame)
{
    Service* service = Service::GetInstancePtr();
    Service::Create();
    EXPECT_EQ(service, Service::GetInstancePtr());
    EXPECT_EQ(1, s_servicesMade);
}

TEST(Singleton, HasNoSecondObject)
{
    Service::GetInstancePtr();
    const unsigned long living = util::Pointee::GetInstanceCount();
    try
    {
        util::SharedPtr<Service> second = QUIB_NEW Service;
        FAIL();
    }
    catch (BadCoderException& e)
    {
        EXPECT_NE(std::string::npos,
                  std::string(e.what()).find("Code assertion failed: \"!s_instance\""));
    }
    EXPECT_EQ(living, util::Pointee::GetInstanceCount());
}

// Deliberate: a destroyed service cannot come back.
TEST(Singleton, DestroyedNeverComesBack)
{
    Phoenix::Create();
    Phoenix::Destroy();
    EXPECT_FALSE(Phoenix::Exists());
    for (int i = 0; i < 2; ++i)
        try
        {
            Phoenix::GetInstancePtr();
            FAIL();
        }
        catch (BadCoderException& e)
        {
            EXPECT_EQ(std::string("Phoenix singleton detected: ") + typeid(Phoenix).name(),
                      e.what());
        }
    EXPECT_NO_THROW(Phoenix::Destroy());
}

TEST(Singleton, MadeByAPlainNewIsTheService)
{
    util::SharedPtr<MadeByHand> made = QUIB_NEW MadeByHand;
    EXPECT_EQ(made.get(), MadeByHand::GetInstancePtr());
    // Its creation was not counted, so that it may be made again.
    MadeByHand::Destroy();
    made = nullptr;
    EXPECT_FALSE(MadeByHand::Exists());
    EXPECT_NO_THROW(MadeByHand::GetInstancePtr());
}

TEST(Singleton, DestroyedBeforeItsFirstUseIsHarmless)
{
    NeverMade::Destroy();
    EXPECT_NO_THROW(NeverMade::GetInstancePtr());
}

TEST(Singleton, IsFoundFromInsideItsConstructorAndNoLongerFromItsDestructor)
{
    LooksAtItself::Create();
    LooksAtItself::Destroy();
    EXPECT_FALSE(LooksAtItself::s_existedAtItsEnd);
}
