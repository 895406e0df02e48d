#include "draw/Lighting.h"

#include <algorithm>
#include <cmath>

quint32 Lighting::shade255(const QVector3D &normal) const
{
    if (!enabled)
        return 255;
    const double low = std::isfinite(ambient) ? std::clamp(ambient, 0.0, 1.0) : 0.0;
    const double facing = std::max(0.0, double(QVector3D::dotProduct(normal, towardLight.normalized())));
    return quint32(std::lround(255.0 * std::min(1.0, low + (1.0 - low) * facing)));
}
