#include "gui/Component.h"

#include "input/Input.h"
#include "rendering/Renderer.h"

#include <gtest/gtest.h>

using gui::Component;
using gui::ComponentPtr;
using math::Vec2;
using math::Vec4;

namespace
{
using Notes = std::vector<std::string>;

class NotingComponent : public Component
{
public:
    NotingComponent(std::string name, Notes* notes)
        : m_name(std::move(name))
        , m_notes(notes)
    {
        SetReflectedName("x");
    }

    void DrawComp() const override
    {
        Component::DrawComp();
        m_notes->push_back(m_name);
        m_drawnColor = rendering::Renderer::GetInstancePtr()->GetColor4();
    }
    void Update(float dt) override
    {
        Component::Update(dt);
        m_notes->push_back(m_name + " " + std::to_string(static_cast<int>(dt)));
        if (m_onUpdate)
            m_onUpdate();
    }
    void OnKeyEvent(const input::KeyEvent& event) override
    {
        Component::OnKeyEvent(event);
        m_notes->push_back(m_name + " key");
        if (m_onKey)
            m_onKey();
    }
    void OnFormChange() override
    {
        Component::OnFormChange();
        ++m_formChanges;
    }

    std::function<void()> m_onUpdate;
    std::function<void()> m_onKey;
    mutable Vec4 m_drawnColor;
    int m_formChanges = 0;

private:
    std::string m_name;
    Notes* m_notes;
};
using NotingPtr = util::SharedPtr<NotingComponent>;

class ComponentTest : public testing::Test
{
protected:
    NotingPtr Make(const std::string& name) { return QUIB_NEW NotingComponent(name, &notes); }
    NotingPtr Add(const std::string& name)
    {
        const NotingPtr component = Make(name);
        owner->AddComponent(component);
        return component;
    }

    Notes notes;
    NotingPtr owner = Make("owner");
};
}

TEST_F(ComponentTest, StartsAtTheOriginWithoutSizeInWhite)
{
    const ComponentPtr component = QUIB_NEW Component;
    EXPECT_EQ(Vec2(0, 0), component->GetOuterPos());
    EXPECT_EQ(Vec2(0, 0), component->GetInnerSize());
    EXPECT_EQ(Vec4(1, 1, 1, 1), component->GetColor());
    EXPECT_EQ(50, component->GetPriority());
    EXPECT_EQ(nullptr, component->GetOwnerComponent());
}

TEST_F(ComponentTest, AChildKnowsItsOwnerAndTheOwnerItsChild)
{
    const NotingPtr child = Add("child");
    EXPECT_EQ(owner.get(), child->GetOwnerComponent());
    EXPECT_TRUE(owner->HasComponent(child));
    owner->RemoveComponent(child);
    EXPECT_EQ(nullptr, child->GetOwnerComponent());
    EXPECT_FALSE(owner->HasComponent(child));
}

TEST_F(ComponentTest, RemovingAStrangerChangesNothing)
{
    const NotingPtr child = Add("child"), stranger = Make("stranger");
    owner->RemoveComponent(stranger);
    EXPECT_TRUE(owner->HasComponent(child));
}

TEST_F(ComponentTest, AChildOfAnotherOwnerMoves)
{
    const NotingPtr child = Add("child"), other = Make("other");
    other->AddComponent(child);
    EXPECT_FALSE(owner->HasComponent(child));
    EXPECT_TRUE(other->HasComponent(child));
    EXPECT_EQ(other.get(), child->GetOwnerComponent());
    owner->OnKeyEvent(input::KeyEvent('a', 0, true, Vec2()));
    EXPECT_EQ(Notes{"owner key"}, notes) << "its events come from the new owner only";
}

TEST_F(ComponentTest, AChildAddedTwiceIsThereOnce)
{
    const NotingPtr child = Add("child");
    owner->AddComponent(child);
    EXPECT_EQ(1u, owner->GetComponents().size());
}

TEST_F(ComponentTest, AllChildrenCanBeRemovedAtOnce)
{
    const NotingPtr a = Add("a"), b = Add("b");
    owner->RemoveAllComponents();
    EXPECT_TRUE(owner->GetComponents().empty());
    EXPECT_EQ(nullptr, a->GetOwnerComponent());
}

TEST_F(ComponentTest, TwoChildrenOfOneNameAreXAndX2ToScripts)
{
    const NotingPtr a = Add("a"), b = Add("b"), c = Add("c");
    EXPECT_EQ("x", a->GetReflectedName());
    EXPECT_EQ("x_2", b->GetReflectedName());
    EXPECT_EQ("x_3", c->GetReflectedName());
}

TEST_F(ComponentTest, AChildLivesByItsOwner)
{
    NotingPtr child = Add("child");
    const util::WeakPtr<NotingComponent> weak(child);
    child.Reset(nullptr);
    EXPECT_FALSE(weak.IsNull());
    owner.Reset(nullptr);
    EXPECT_TRUE(weak.IsNull());
}

TEST_F(ComponentTest, DrawsItselfThenItsChildrenInTheirOrder)
{
    const NotingPtr a = Add("a"), b = Add("b");
    a->AddComponent(Make("a1"));
    owner->DrawCompAndChildren();
    EXPECT_EQ((Notes{"owner", "a", "a1", "b"}), notes);
}

TEST_F(ComponentTest, ChildrenAreOrderedByPriorityTheHighestInFront)
{
    const NotingPtr a = Add("a"), b = Add("b");
    a->SetPriority(60);
    owner->DrawChildren();
    EXPECT_EQ((Notes{"b", "a"}), notes);
}

TEST_F(ComponentTest, AChildThatLeftSortsItsOldOwnerNoMore)
{
    const NotingPtr a = Add("a"), b = Add("b");
    const NotingPtr other = Make("other");
    other->AddComponent(a);
    a->SetPriority(60);
    owner->DrawChildren();
    EXPECT_EQ((Notes{"b"}), notes);
}

TEST_F(ComponentTest, ColorsMultiplyDownTheTreeAndAreRestored)
{
    const NotingPtr a = Add("a"), b = Add("b");
    owner->SetColor(Vec4(0.5f, 1, 1, 0.5f));
    a->SetColor(Vec4(0.5f, 0.5f, 1, 1));
    owner->DrawCompAndChildren();
    EXPECT_EQ(Vec4(0.25f, 0.5f, 1, 0.5f), a->m_drawnColor);
    EXPECT_EQ(Vec4(0.5f, 1, 1, 0.5f), b->m_drawnColor);
    EXPECT_EQ(Vec4(1, 1, 1, 1), rendering::Renderer::GetInstancePtr()->GetColor4());
}

TEST_F(ComponentTest, UpdatesItsChildrenFirstFromTheLastToTheFirst)
{
    const NotingPtr a = Add("a"), b = Add("b");
    owner->Update(2);
    EXPECT_EQ((Notes{"b 2", "a 2", "owner 2"}), notes);
}

TEST_F(ComponentTest, AChildMayLeaveInItsUpdate)
{
    const NotingPtr a = Add("a"), b = Add("b"), c = Add("c");
    b->m_onUpdate = [&] { owner->RemoveComponent(b); };
    owner->Update(0);
    EXPECT_EQ((Notes{"c 0", "b 0", "a 0", "owner 0"}), notes);
}

TEST_F(ComponentTest, AnUpdateMayRemoveAllChildren)
{
    const NotingPtr a = Add("a"), b = Add("b"), c = Add("c");
    c->m_onUpdate = [&] { owner->RemoveAllComponents(); };
    owner->Update(0);
    EXPECT_EQ((Notes{"c 0", "owner 0"}), notes);
}

TEST_F(ComponentTest, EventsReachTheChildAddedLastFirst)
{
    const NotingPtr a = Add("a"), b = Add("b");
    owner->OnKeyEvent(input::KeyEvent('a', 0, true, Vec2()));
    EXPECT_EQ((Notes{"b key", "a key", "owner key"}), notes);
}

TEST_F(ComponentTest, AmongEqualsTheOrderOfEventsIsThatOfDrawingBackwards)
{
    const NotingPtr a = Add("a"), b = Add("b"), c = Add("c");
    // There and back: it stays in front of those that it has passed.
    a->SetPriority(60);
    a->SetPriority(50);
    owner->OnKeyEvent(input::KeyEvent('a', 0, true, Vec2()));
    EXPECT_EQ((Notes{"a key", "c key", "b key", "owner key"}), notes);
    notes.clear();
    owner->DrawChildren();
    EXPECT_EQ((Notes{"b", "c", "a"}), notes);
}

TEST_F(ComponentTest, AChildMayLeaveDuringAnEventThatOthersGetStill)
{
    const NotingPtr a = Add("a"), b = Add("b");
    b->m_onKey = [&] { owner->RemoveAllComponents(); };
    owner->OnKeyEvent(input::KeyEvent('a', 0, true, Vec2()));
    EXPECT_EQ((Notes{"b key", "a key", "owner key"}), notes) << "as the event began with both";
    notes.clear();
    owner->OnKeyEvent(input::KeyEvent('a', 0, true, Vec2()));
    EXPECT_EQ(Notes{"owner key"}, notes);
}

TEST_F(ComponentTest, OneThatFillsItsOwnerFollowsItsSize)
{
    owner->SetInnerSize(Vec2(100, 50));
    const NotingPtr child = Make("child");
    child->SetOuterPos(Vec2(7, 7));
    child->SetFillOwner(true);
    EXPECT_EQ(Vec2(0, 0), child->GetInnerSize()) << "it has no owner yet";
    owner->AddComponent(child);
    EXPECT_EQ(Vec2(0, 0), child->GetOuterPos());
    EXPECT_EQ(Vec2(100, 50), child->GetInnerSize());
    owner->SetInnerSize(Vec2(30, 40));
    EXPECT_EQ(Vec2(30, 40), child->GetInnerSize());
}

TEST_F(ComponentTest, OneThatDoesNotFillItsOwnerKeepsItsPlace)
{
    const NotingPtr child = Add("child");
    child->SetOuterPos(Vec2(7, 8));
    child->SetInnerSize(Vec2(1, 2));
    owner->SetInnerSize(Vec2(30, 40));
    EXPECT_EQ(math::BoundingBox(Vec2(7, 8), Vec2(8, 10)), child->GetOuterBB());
}

TEST_F(ComponentTest, SettingTheSameFormTellsNobody)
{
    owner->SetInnerSize(Vec2(30, 40));
    owner->SetOuterPos(Vec2(1, 1));
    EXPECT_EQ(2, owner->m_formChanges);
    owner->SetInnerSize(Vec2(30, 40));
    owner->SetOuterPos(Vec2(1, 1));
    EXPECT_EQ(2, owner->m_formChanges);
}
