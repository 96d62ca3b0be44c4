// Writes scenes as script text, and offers scripts the commands that this text consists of: loading a
// scene is running it. Made at start, never destroyed.
#pragma once

#include "app/Group.h"
#include "script/Expressions.h"
#include "script/Objects.h"
#include "util/Singleton.h"

#include <unordered_map>
#include <vector>

namespace physics
{
class Geom;
}

namespace app
{
class Chain;
class GeomEntity;
class JointEntity;
class PenEntity;
class Widget;

class Serializer : public util::Pointee, public util::Singleton<Serializer>
{
public:
    struct ChainPlace
    {
        unsigned long chain; // its id in this run
        size_t index;        // holes count
    };

    // The ids by which one text tells which of its entities belong together, from 1 on in the order of
    // the text. They hang on nothing but the scene's content: a scene that is loaded and saved again
    // gives the same file, and no two things share one, whatever was added, cloned and imported since.
    struct FileIDs
    {
        std::unordered_map<unsigned long, unsigned long> entities; // of this run -> in the text
        std::unordered_map<unsigned, int> geoms; // not the world's, which is 0 in every text
        std::unordered_map<unsigned long, unsigned long> chains;
        std::unordered_map<unsigned long, ChainPlace> chainPlaces; // by the entity's id of this run
    };

    Serializer();
    ~Serializer() override;

    /// The whole scene with its settings. Writes the version into FileInfo, and there the scene's texts
    /// where it had none; and into each entity its zDepth.
    util::String SerializeScene();
    /// The group's entities, to be brought into some other scene: without settings, water, groups and
    /// widgets. What it writes into FileInfo and the entities is as with a scene.
    util::String SerializeQuiblet(const GroupPtr& group);
    /// Puts the scene's entities into the order of their zDepth.
    /// @param text  is run
    /// @return what it added to the scene and is there still; the same group every time
    /// @throws BadDataException  when the text does not parse; nothing has run then. A statement that
    ///                           fails is logged and costs itself only.
    GroupPtr Deserialize(const util::String& text);

    // The pieces of these texts.

    /// What FileInfo says: the texts that are not empty, and the version.
    script::ExpressionList GetMetaVarList();
    /// Geometries first, then joints and pens, each in the order given. A joint's end that is not among
    /// them is written as a point of the world. What the scene would remove at its next update, as it
    /// is no longer alive, is left out.
    /// @param entities  of the scene
    FileIDs SerializeEntities(script::CodeBlock& block, const std::vector<EntityPtr>& entities);
    /// @param ids  members that it does not know are left out; with null these are the ids of this run
    void SerializeGroup(script::CodeBlock& block, const GroupPtr& group,
                        const FileIDs* ids = nullptr);
    // The course of the trail behind what is drawn. A file tells it only when there is a trail; who wants
    // all settings back as they were needs it always.
    enum class FadeSettings
    {
        WhenShown,
        Always
    };
    /// All that a scene sets but does not consist of: the world's, the look, and the view.
    void SerializeSettings(script::CodeBlock& block,
                           FadeSettings fadeSettings = FadeSettings::WhenShown);
    /// @param widget  one that has a group
    /// @param ids     as with groups
    void SerializeWidget(script::CodeBlock& block, const Widget& widget,
                         const FileIDs* ids = nullptr);
    /// What is run next may name the entity, and its geometry, by their ids of this run.
    void RegisterEntity(const EntityPtr& entity);

    /// The id as the text gave it that brought the entity, else the entity's own. A text may give one
    /// id to several entities.
    unsigned long GetFileID(const Entity& entity) const;
    /// The same for geometries; the world's has 0.
    /// @param geomID  its id in this run
    unsigned long GetFileGeomID(unsigned geomID) const;

    /// Lets go of everything that was read so far: its ids mean nothing any more.
    void ForgetAll();
    /// The same for one that has left the scene.
    void ForgetEntity(const EntityPtr& entity);

private:
    // What a scene can hold. One table serves reading and writing.
    struct Kind
    {
        const char* command; // of "Scene"
        const char* oldType; // in files from before scenes were programs; null where these had none
        void (Serializer::*handler)(const EntitySerializer&);
        bool (*isKind)(const Entity&); // null for what is no entity
    };
    static const std::vector<Kind>& GetKinds();

    // The commands (SerializerCommands.cpp).
    script::ObjectPtr Helper(const Kind& kind, const script::ObjectPtr& argument);
    void AddPlane(const EntitySerializer& serializer);
    void AddCircle(const EntitySerializer& serializer);
    void AddPolygon(const EntitySerializer& serializer);
    void AddBox(const EntitySerializer& serializer);
    void AddFixjoint(const EntitySerializer& serializer);
    void AddHinge(const EntitySerializer& serializer);
    void AddSpring(const EntitySerializer& serializer);
    void AddPen(const EntitySerializer& serializer);
    void AddWater(const EntitySerializer& serializer);
    void AddGroup(const EntitySerializer& serializer);
    void AddWidget(const EntitySerializer& serializer);
    void AddGeomEntity(const EntitySerializer& serializer,
                       const util::SharedPtr<GeomEntity>& entity);
    void AttachJoint(const EntitySerializer& serializer, const util::SharedPtr<JointEntity>& joint);
    void AddEntity(const EntitySerializer& serializer, const EntityPtr& entity);
    void CheckChain(const EntitySerializer& serializer, const EntityPtr& entity);
    /// The geometry whose id stands under the key; null for a missing key and an unknown id.
    util::SharedPtr<physics::Geom> FindGeom(const EntitySerializer& serializer,
                                            const util::String& key) const;
    /// The entities that "entityIDs" names; unknown ids are skipped.
    EntitySet ReadMembers(const EntitySerializer& serializer) const;

    // Files from before scenes were programs (OldFormat.cpp).
    void DeserializeOld(const script::CodeBlock& program);
    void DeserializeOldEntity(EntitySerializer& serializer);

    void SerializeWater(script::CodeBlock& block);
    void SerializeEntity(script::CodeBlock& block, const Entity& entity, FileIDs& ids);

    // What the current text has brought, by the ids that stand in it; the latest of equal ones.
    GroupPtr m_loadedGroup;
    std::unordered_map<unsigned long, EntityPtr> m_entities;
    std::unordered_map<unsigned long, util::SharedPtr<physics::Geom>> m_geoms; // not the world's
    std::unordered_map<unsigned long, util::SharedPtr<Chain>> m_chains;
    std::unordered_map<unsigned long, unsigned long> m_entityIDs; // of this run -> in the text
    std::unordered_map<unsigned, unsigned long> m_geomIDs;        // of this run -> in the text
};

/// The function's variables once it has run: how a block of script becomes a bag of values.
EntitySerializer CallBlock(script::Function& function);
}
