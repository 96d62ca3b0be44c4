#include "app/Line.h"

#include "rendering/Pushers.h"
#include "rendering/Renderer.h"
#include "util/ScopeProfiler.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <optional>

using math::Vec2;

namespace app
{
namespace
{
// Of the length: how near its ends a shape comes that does not cross itself.
const float MaxGap = 0.125f;

/// The one nearest the middle of a line of that length, of those that are not crossed. Of equally near ones
/// the earliest.
std::optional<size_t> FindMiddleSegment(const physics::LinesegmentList& segments,
                                        const std::vector<bool>& isCrossed, float length)
{
    std::optional<size_t> nearest;
    float nearestDistance = 0, start = 0;
    for (size_t i = 0; i < segments.size(); ++i)
    {
        const float segmentLength = segments[i].Length();
        const float distance = std::fabs(start + segmentLength / 2 - length / 2);
        if (!isCrossed[i] && (!nearest || distance < nearestDistance))
        {
            nearest = i;
            nearestDistance = distance;
        }
        start += segmentLength;
    }
    return nearest;
}

std::optional<Vec2> FindCrossing(const physics::Linesegment& a, const physics::Linesegment& b)
{
    // The test leaves it alone for segments with the same start or end.
    Vec2 crossing = a.p0 == b.p0 ? a.p0 : a.p1;
    if (!physics::Intersects(a, b, &crossing))
        return std::nullopt;
    return crossing;
}
}

void Line::Add(const Vec2& point)
{
    if (m_points.empty() || m_points.back() != point)
        m_points.push_back(point);
}

float Line::Length() const
{
    float length = 0;
    for (size_t i = 1; i < m_points.size(); ++i)
        length += math::Distance(m_points[i - 1], m_points[i]);
    return length;
}

physics::LinesegmentList Line::GetSegments() const
{
    physics::LinesegmentList segments;
    segments.reserve(m_points.size());
    for (size_t i = 1; i < m_points.size(); ++i)
        segments.emplace_back(m_points[i - 1], m_points[i]);
    return segments;
}

void Line::Draw() const
{
    QUIB_PROFILE("Line::Draw");
    if (m_points.size() < 2)
        return;
    const rendering::AttribPusher attribs(GL_ENABLE_BIT);
    glEnable(GL_LINE_SMOOTH);
    rendering::Renderer* renderer = rendering::Renderer::GetInstancePtr();
    glBegin(GL_LINE_STRIP);
    for (const Vec2& point : m_points)
        renderer->Vertex(point);
    glEnd();
}

Line::Shape Line::CheckSelfIntersect()
{
    const physics::LinesegmentList segments = GetSegments();
    if (segments.empty())
        return Open;
    const float length = Length();
    const std::vector<bool> isCrossed = physics::FindIntersecting(segments);
    if (std::find(isCrossed.begin(), isCrossed.end(), true) == isCrossed.end())
        return math::Distance(m_points.front(), m_points.back()) < MaxGap * length ? Closed : Open;

    const std::optional<size_t> middle = FindMiddleSegment(segments, isCrossed, length);
    if (!middle || *middle == 0)
        return Hopeless;
    size_t first = *middle, last = *middle;
    while (last + 1 < segments.size() && !isCrossed[last])
        ++last;
    while (first > 0 && !isCrossed[first])
        --first;

    Line loop;
    for (size_t i = first + 1; i <= last; ++i)
        loop.Add(m_points[i]);
    if (const std::optional<Vec2> crossing = FindCrossing(segments[first], segments[last]))
        loop.Add(*crossing);
    *this = loop;
    return Closed;
}

bool Line::FirstLineIntersectTheRest() const
{
    const size_t n = m_points.size();
    for (size_t i = 1; i < n; ++i)
        if (physics::LineSegmentIntersectTest(m_points[i], m_points[(i + 1) % n], m_points[0],
                                              m_points[1], nullptr))
            return true;
    return false;
}

bool Line::LastLineIntersectTheRest() const
{
    for (const physics::Linesegment& segment : GetSegments())
        if (physics::LineSegmentIntersectTest(segment.p0, segment.p1, m_points.back(),
                                              m_points.front(), nullptr))
            return true;
    return false;
}

math::Vec2List IntersectTest(const Line& a, const Line& b)
{
    math::Vec2List crossings;
    const physics::LinesegmentList segments = b.GetSegments();
    for (const physics::Linesegment& segment : a.GetSegments())
        for (const physics::Linesegment& other : segments)
            if (const std::optional<Vec2> crossing = FindCrossing(segment, other))
                crossings.push_back(*crossing);
    return crossings;
}
}
