// A rectangle in the scene.
#pragma once

#include "app/entities/FiniteGeomEntity.h"

namespace physics
{
class Box;
}

namespace app
{
class BoxEntity final : public FiniteGeomEntity
{
public:
    /// @param geom  not null; this entity's alone
    explicit BoxEntity(const util::SharedPtr<physics::Box>& geom);

    void Draw() const override;
    void SerializeTo(EntitySerializer& serializer) const override;
    void Deserialize(const EntitySerializer& serializer) override;

private:
    physics::Box& GetBox() const;
};
}
