#include "draw/OrbitCamera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double lowest = -89.0, highest = 89.0;
constexpr double nearest = 120.0, farthest = 6000.0;

double radians(double degrees)
{
    return degrees * std::numbers::pi / 180.0;
}

double degrees(double radians)
{
    return radians * 180.0 / std::numbers::pi;
}

} // namespace

OrbitCamera::OrbitCamera()
{
    reset();
}

void OrbitCamera::reset()
{
    const Camera start;
    const QVector3D offset = start.position - start.target;
    m_distance = offset.length();
    m_up = degrees(std::asin(offset.y() / m_distance));
    m_around = degrees(std::atan2(offset.z(), offset.x()));
}

void OrbitCamera::turn(double aroundDegrees, double upDegrees)
{
    if (std::isfinite(aroundDegrees))
        m_around = std::fmod(m_around + aroundDegrees, 360.0);
    if (std::isfinite(upDegrees))
        m_up = std::clamp(m_up + upDegrees, lowest, highest);
}

void OrbitCamera::zoom(double factor)
{
    if (std::isfinite(factor) && factor > 0)
        m_distance = std::clamp(m_distance * factor, nearest, farthest);
}

Camera OrbitCamera::camera() const
{
    Camera camera;
    const double level = std::cos(radians(m_up));
    const QVector3D offset(float(level * std::cos(radians(m_around))), float(std::sin(radians(m_up))),
                           float(level * std::sin(radians(m_around))));
    camera.position = camera.target + float(m_distance) * offset;
    return camera;
}
