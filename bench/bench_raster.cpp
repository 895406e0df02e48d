// Block pictures drawn on the CPU, as a turning preview draws them: two
// generated blocks of 1,000 textured polygons, each drawn frame after frame at
// 600x600 from a camera going round it, in Rover's order and with the depth
// buffer; the median frame gives the frames per second. Then the time of one
// 512x512 picture from nothing (a new rasterizer, textures converted).
//
//   sphere:  1,000 one-sided quads closing a ball, about half of them facing
//            the camera, one 64x64 texture.
//   pile:    1,000 two-sided quads crossing each other in the block, a quarter
//            translucent and a quarter with transparent texels: much overdraw.
//
// Usage: bench_raster [frames]

#include "draw/Rasterizer.h"

#include <QImage>
#include <QRandomGenerator>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace {

QImage texture(int size, bool withHoles)
{
    QImage image(size, size, QImage::Format_ARGB32);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const bool hole = withHoles && ((x / 8 + y / 8) % 3 == 0);
            image.setPixel(x, y, hole ? 0u : qRgb(x * 255 / size, y * 255 / size, ((x ^ y) & 8) ? 200 : 60));
        }
    return image;
}

DrawPolygon texturedQuad(const QList<QVector3D> &points, const QImage &image)
{
    DrawPolygon polygon;
    polygon.points = points;
    polygon.uv = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    polygon.texture = image;
    return polygon;
}

// 25 bands of 40 quads between 75 degrees south and north, facing out.
QList<DrawPolygon> sphere()
{
    const QImage image = texture(64, false);
    const QVector3D centre(128, 128, 128);
    const auto at = [&](int band, int step) {
        const double lat = (-75.0 + 150.0 * band / 25) * std::numbers::pi / 180;
        const double lon = 2 * std::numbers::pi * step / 40;
        return centre
               + 120
                     * QVector3D(float(std::cos(lat) * std::cos(lon)), float(std::sin(lat)),
                                 float(std::cos(lat) * std::sin(lon)));
    };
    QList<DrawPolygon> polygons;
    for (int band = 0; band < 25; ++band)
        for (int step = 0; step < 40; ++step) {
            DrawPolygon quad =
                texturedQuad({at(band, step), at(band + 1, step), at(band + 1, step + 1), at(band, step + 1)}, image);
            if (QVector3D::dotProduct(DrawPolygon::planeNormal(quad.points), quad.points[0] - centre) < 0)
                std::reverse(quad.points.begin(), quad.points.end());
            polygons << quad;
        }
    return polygons;
}

QList<DrawPolygon> pile()
{
    const QImage plain = texture(64, false), holed = texture(64, true);
    QRandomGenerator random(7);
    const auto between = [&](double low, double high) { return float(low + (high - low) * random.generateDouble()); };
    QList<DrawPolygon> polygons;
    for (int i = 0; i < 1000; ++i) {
        const QVector3D centre(between(30, 226), between(30, 226), between(30, 226));
        const QVector3D a = QVector3D(between(-1, 1), between(-1, 1), between(-1, 1)).normalized() * between(15, 35);
        QVector3D b = QVector3D::crossProduct(a, QVector3D(between(-1, 1), between(-1, 1), between(-1, 1)));
        b = b.normalized() * between(15, 35);
        DrawPolygon quad =
            texturedQuad({centre - a - b, centre - a + b, centre + a + b, centre + a - b}, i % 4 == 1 ? holed : plain);
        quad.faces = DrawFaces::Both;
        if (i % 4 == 2)
            quad.opacity = 0.6;
        polygons << quad;
    }
    return polygons;
}

Camera orbiting(int frame)
{
    const double angle = frame * 2 * std::numbers::pi / 60;
    Camera camera;
    camera.position = QVector3D(float(128 + 430 * std::cos(angle)), 500, float(128 + 430 * std::sin(angle)));
    return camera;
}

double seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void framesPerSecond(const char *name, const QList<DrawPolygon> &polygons, DrawOrder order, int frames)
{
    Rasterizer rasterizer(QSize(600, 600));
    rasterizer.draw(polygons, orbiting(0), order); // textures converted before timing
    std::vector<double> times;
    qint64 covered = 0;
    for (int frame = 0; frame < frames; ++frame) {
        const auto start = std::chrono::steady_clock::now();
        rasterizer.clear();
        rasterizer.draw(polygons, orbiting(frame), order);
        times.push_back(seconds(start));
        const QImage &image = rasterizer.image();
        covered += std::count_if(reinterpret_cast<const quint32 *>(image.constBits()),
                                 reinterpret_cast<const quint32 *>(image.constBits()) + 600 * 600,
                                 [](quint32 pixel) { return pixel != 0; });
    }
    const double frameTime = median(times);
    std::printf("%-7s %-6s 600x600: %7.1f frames/s (median frame %.2f ms, slowest %.2f ms, %.0f%% of pixels drawn)\n",
                name, order == DrawOrder::Rover ? "Rover" : "depth", 1.0 / frameTime, frameTime * 1e3,
                *std::max_element(times.begin(), times.end()) * 1e3, 100.0 * double(covered) / (600.0 * 600 * frames));
}

void onePicture(const char *name, const QList<DrawPolygon> &polygons, int runs)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        const QImage image = drawPolygons(polygons, Camera(), QSize(512, 512), DrawOrder::Depth);
        times.push_back(seconds(start));
    }
    std::printf("%-7s one 512x512 picture from nothing: %.2f ms (median of %d)\n", name, median(times) * 1e3, runs);
}

} // namespace

int main(int argc, char **argv)
{
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
    const QList<DrawPolygon> ball = sphere(), heap = pile();
    for (DrawOrder order : {DrawOrder::Rover, DrawOrder::Depth}) {
        framesPerSecond("sphere", ball, order, frames);
        framesPerSecond("pile", heap, order, frames);
    }
    onePicture("sphere", ball, 15);
    onePicture("pile", heap, 15);
    return 0;
}
