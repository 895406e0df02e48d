#include "draw/CameraProjection.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

void cross(const double a[3], const double b[3], double out[3])
{
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

// Scales v to unit length; false (v unchanged) when it is too short to have a direction.
bool normalize(double v[3])
{
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (!(length > 1e-9) || !std::isfinite(length))
        return false;
    for (int i = 0; i < 3; ++i)
        v[i] /= length;
    return true;
}

} // namespace

CameraProjection::CameraProjection(const Camera &camera, QSize size)
    : m_position(camera.position),
      m_halfWidth(size.width() / 2.0),
      m_halfHeight(size.height() / 2.0)
{
    const QVector3D towardTarget = camera.target - camera.position;
    m_forward[0] = towardTarget.x();
    m_forward[1] = towardTarget.y();
    m_forward[2] = towardTarget.z();
    if (!normalize(m_forward)) {
        m_forward[0] = 0;
        m_forward[1] = 0;
        m_forward[2] = 1;
    }
    const double worldUp[3] = {0, 1, 0};
    cross(worldUp, m_forward, m_right);
    if (!normalize(m_right)) {
        m_right[0] = 1;
        m_right[1] = 0;
        m_right[2] = 0;
    }
    cross(m_forward, m_right, m_up);
    normalize(m_up);

    double fov = std::isfinite(camera.fovDegrees) ? camera.fovDegrees : 40.0;
    fov = std::clamp(fov, 1.0, 179.0);
    m_focal = m_halfHeight / std::tan(fov * std::numbers::pi / 360.0);
}

ViewPoint CameraProjection::toView(const QVector3D &point) const
{
    const double d[3] = {double(point.x()) - m_position.x(), double(point.y()) - m_position.y(),
                         double(point.z()) - m_position.z()};
    return {d[0] * m_right[0] + d[1] * m_right[1] + d[2] * m_right[2], d[0] * m_up[0] + d[1] * m_up[1] + d[2] * m_up[2],
            d[0] * m_forward[0] + d[1] * m_forward[1] + d[2] * m_forward[2]};
}

QPointF CameraProjection::toScreen(const ViewPoint &point) const
{
    return {m_halfWidth + point.x / point.z * m_focal, m_halfHeight - point.y / point.z * m_focal};
}
