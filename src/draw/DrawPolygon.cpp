#include "draw/DrawPolygon.h"

#include <cmath>

namespace {

// Unit length in double precision, so that small polygons keep their normal;
// zero when the vector has no length.
QVector3D unit(double x, double y, double z)
{
    const double length = std::sqrt(x * x + y * y + z * z);
    if (!(length > 0) || !std::isfinite(length))
        return {};
    return {float(x / length), float(y / length), float(z / length)};
}

} // namespace

QVector3D DrawPolygon::planeNormal(const QList<QVector3D> &points)
{
    if (points.size() < 3)
        return {};
    const QVector3D a = points[2] - points[1];
    const QVector3D b = points[0] - points[1];
    return unit(double(a.y()) * b.z() - double(a.z()) * b.y(), double(a.z()) * b.x() - double(a.x()) * b.z(),
                double(a.x()) * b.y() - double(a.y()) * b.x());
}

QVector3D DrawPolygon::frontNormal() const
{
    if (normal.isNull())
        return planeNormal(points);
    return unit(normal.x(), normal.y(), normal.z());
}
