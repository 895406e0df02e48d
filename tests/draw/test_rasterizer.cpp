// Pictures judged against the camera model worked out independently here:
// pixel coverage, which polygon hides which, faces, perspective texturing,
// transparency and translucency, and polygons crossing the camera plane.
#include "draw/Rasterizer.h"
#include "support/DataRows.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

Q_DECLARE_METATYPE(Camera)
Q_DECLARE_METATYPE(DrawPolygon)
Q_DECLARE_METATYPE(DrawOrder)

using namespace Qt::StringLiterals;
using V = QVector3D;

namespace {

// The camera's frame and focal length for a square picture of side n.
struct Frame {
    V eye, r, u, f;
    double focal;
    Frame(const Camera &c, int n) : eye(c.position), f((c.target - c.position).normalized())
    {
        r = V::crossProduct(V(0, 1, 0), f).normalized();
        u = V::crossProduct(f, r);
        focal = n / 2.0 / std::tan(c.fovDegrees * std::numbers::pi / 360.0);
    }
    QPointF project(V p, int n) const
    {
        const V d = p - eye;
        const double z = V::dotProduct(d, f);
        return {n / 2.0 + V::dotProduct(d, r) / z * focal, n / 2.0 - V::dotProduct(d, u) / z * focal};
    }
    // Where the ray through the centre of pixel (i, j) meets the plane y = 0, if ahead.
    std::optional<V> floorHit(int i, int j, int n) const
    {
        const V ray = f + r * float((i + 0.5 - n / 2.0) / focal) - u * float((j + 0.5 - n / 2.0) / focal);
        const double t = -eye.y() / ray.y();
        return t > 0 ? std::optional<V>(eye + ray * float(t)) : std::nullopt;
    }
};

bool inside(const QList<QPointF> &corners, QPointF p)
{
    int positive = 0, negative = 0;
    for (qsizetype k = 0; k < corners.size(); ++k) {
        const QPointF a = corners[k], b = corners[(k + 1) % corners.size()];
        const double e = (b.x() - a.x()) * (p.y() - a.y()) - (b.y() - a.y()) * (p.x() - a.x());
        (e > 0 ? positive : negative)++;
    }
    return positive == 0 || negative == 0;
}

DrawPolygon quad(QList<V> points, QColor colour, double opacity = 1, DrawFaces faces = DrawFaces::Both)
{
    DrawPolygon p;
    p.points = points;
    p.uv = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    p.colour = colour;
    p.opacity = opacity;
    p.faces = faces;
    return p;
}

// A wall facing south (toward -z) at depth z, clockwise seen from the south.
DrawPolygon wall(float z, float x0, float x1, QColor colour, double opacity = 1)
{
    return quad({V(x0, 0, z), V(x0, 256, z), V(x1, 256, z), V(x1, 0, z)}, colour, opacity, DrawFaces::Front);
}

const Camera southView{V(128, 128, -400), V(128, 128, 128), 40};
constexpr int N = 128;

} // namespace

class TestRasterizer : public QObject {
    Q_OBJECT
private slots:
    void coverage_data();
    void coverage();
    void hiding_data();
    void hiding();
    void perspectiveTexture();
    void floorThroughCameraPlane();
};

void TestRasterizer::coverage_data()
{
    addColumns<Camera, QList<V>, bool>("camera", "points", "drawn");
    const QList<V> top{V(0, 256, 0), V(0, 256, 256), V(256, 256, 256), V(256, 256, 0)};
    const QList<V> slanted{V(20, 10, 30), V(60, 240, 90), V(250, 200, 200), V(210, -30, 140)};
    addRow("top of the cube, default camera", Camera(), top, true);
    addRow("top seen from below", Camera{V(128, -300, -200), V(128, 128, 128), 40}, top, false);
    addRow("east half looking north", southView, QList<V>{V(128, 0, 0), V(128, 256, 0), V(256, 256, 0), V(256, 0, 0)},
           true);
    addRow("slanted, wide lens", Camera{V(300, 50, -100), V(100, 150, 150), 75}, slanted, true);
    addRow("reaching past the picture", Camera{V(128, 128, -40), V(128, 128, 128), 40}, slanted, true);
}

// One-sided quads: covered pixels are exactly those whose centre lies in the projected corners.
void TestRasterizer::coverage()
{
    QFETCH(Camera, camera);
    QFETCH(QList<V>, points);
    QFETCH(bool, drawn);
    const DrawPolygon polygon = quad(points, Qt::white, 1, DrawFaces::Front);
    const QImage picture = drawPolygons({polygon}, camera, QSize(N, N), DrawOrder::Rover);
    QCOMPARE(picture.format(), QImage::Format_ARGB32_Premultiplied);
    const Frame frame(camera, N);
    QList<QPointF> corners;
    for (const V &p : points)
        corners << frame.project(p, N);
    int expected = 0, wrong = 0;
    for (int j = 0; j < N; ++j)
        for (int i = 0; i < N; ++i) {
            const bool in = drawn && inside(corners, QPointF(i + 0.5, j + 0.5));
            expected += in;
            wrong += in != (qAlpha(picture.pixel(i, j)) == 255);
            QVERIFY(qAlpha(picture.pixel(i, j)) % 255 == 0);
        }
    QVERIFY(!drawn || expected > 200);
    QVERIFY2(wrong <= 2, qPrintable(u"%1 of %2 pixels differ"_s.arg(wrong).arg(expected)));
    if (camera.position == southView.position) // east lies right when looking north
        QVERIFY(qAlpha(picture.pixel(N - 1 - N / 4, N / 2)) == 255 && qAlpha(picture.pixel(N / 4, N / 2)) == 0);
}

void TestRasterizer::hiding_data()
{
    addColumns<QList<DrawPolygon>, DrawOrder>("polygons", "order");
    QTest::addColumn<QRgb>("centre"); // premultiplied, at the middle of the picture

    const DrawPolygon red = wall(100, 0, 256, Qt::red), green = wall(50, 0, 256, Qt::green);
    const DrawPolygon glass = wall(50, 0, 256, Qt::red, 0.5), blue = wall(100, 0, 256, Qt::blue);
    DrawPolygon holed = wall(50, 0, 256, Qt::white); // a GIF's transparent colour everywhere
    holed.texture = QImage(2, 2, QImage::Format_ARGB32);
    holed.texture.fill(Qt::transparent);
    DrawPolygon back = green; // the wall seen from behind
    std::reverse(back.points.begin(), back.points.end());
    const QRgb half = qRgba(128, 0, 127, 255);

    addRow("farther first, Rover", QList{red, green}, DrawOrder::Rover, qRgb(255, 0, 0));
    addRow("farther first, depth", QList{red, green}, DrawOrder::Depth, qRgb(0, 255, 0));
    addRow("nearer first, depth", QList{green, red}, DrawOrder::Depth, qRgb(0, 255, 0));
    addRow("one-sided from behind", QList{back}, DrawOrder::Rover, QRgb(0));
    back.faces = DrawFaces::Both;
    addRow("two-sided from behind", QList{back}, DrawOrder::Depth, qRgb(0, 255, 0));
    DrawPolygon never = green;
    never.faces = DrawFaces::Never;
    addRow("never drawn", QList{never, red}, DrawOrder::Rover, qRgb(255, 0, 0));
    addRow("transparent texels, Rover", QList{holed, blue}, DrawOrder::Rover, qRgb(0, 0, 255));
    addRow("transparent texels, depth", QList{holed, blue}, DrawOrder::Depth, qRgb(0, 0, 255));
    addRow("transparent texels alone", QList{holed}, DrawOrder::Depth, QRgb(0));
    addRow("translucent, Rover", QList{glass, blue}, DrawOrder::Rover, half);
    addRow("translucent listed last, depth", QList{glass, blue}, DrawOrder::Depth, half);
    addRow("translucent listed first, depth", QList{blue, glass}, DrawOrder::Depth, half);
    const DrawPolygon blueGlass = wall(100, 0, 256, Qt::blue, 0.5);
    addRow("two translucent, Rover", QList{glass, blueGlass}, DrawOrder::Rover, qRgba(128, 0, 64, 192));
    addRow("two translucent, depth", QList{glass, blueGlass}, DrawOrder::Depth, qRgba(128, 0, 64, 192));
    addRow("translucent alone", QList{glass}, DrawOrder::Rover, qRgba(128, 0, 0, 128));
}

// Whatever the nearer wall leaves uncovered, every covered pixel gets the same
// value: a seam of the triangle fan that blended twice would show.
void TestRasterizer::hiding()
{
    QFETCH(QList<DrawPolygon>, polygons);
    QFETCH(DrawOrder, order);
    QFETCH(QRgb, centre);
    const QImage picture = drawPolygons(polygons, southView, QSize(N, N), order);
    QCOMPARE(QString::number(picture.pixel(N / 2, N / 2), 16), QString::number(centre, 16));
    for (int j = N / 4; j < 3 * N / 4; ++j)
        for (int i = N / 4; i < 3 * N / 4; ++i)
            QCOMPARE(picture.pixel(i, j), picture.pixel(N / 2, N / 2));
}

// A 16x16 texture whose every texel has its own colour, on a floor running far
// north: each pixel shows the texel under its centre, not an affine blur of it.
void TestRasterizer::perspectiveTexture()
{
    QImage texture(16, 16, QImage::Format_RGB32);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            texture.setPixel(x, y, qRgb(x * 16, y * 16, 0));
    DrawPolygon floor = quad({V(0, 0, 0), V(0, 0, 2560), V(256, 0, 2560), V(256, 0, 0)}, Qt::black);
    floor.texture = texture;
    floor.uv = {{0, 0}, {0, 2}, {3, 2}, {3, 0}}; // repeated 3 times across, twice along
    const Camera camera{V(100, 60, -50), V(128, 0, 300), 60};
    const QImage picture = drawPolygons({floor}, camera, QSize(N, N), DrawOrder::Depth);
    const Frame frame(camera, N);
    int covered = 0, wrong = 0;
    for (int j = 0; j < N; ++j)
        for (int i = 0; i < N; ++i) {
            const std::optional<V> hit = frame.floorHit(i, j, N);
            if (!hit || hit->x() < 0.5 || hit->x() > 255.5 || hit->z() < 1 || hit->z() > 2559)
                continue;
            ++covered;
            const int column = int(hit->x() * 3 / 256 * 16) % 16, row = int(hit->z() * 2 / 2560 * 16) % 16;
            wrong += picture.pixel(i, j) != texture.pixel(column, row);
        }
    QVERIFY(covered > N * N / 3);
    QVERIFY2(wrong * 50 < covered, qPrintable(u"%1 of %2 texels wrong"_s.arg(wrong).arg(covered)));
}

// A floor reaching behind the camera is cut at the camera plane: every pixel
// whose ray goes down meets it, nothing above the horizon is drawn.
void TestRasterizer::floorThroughCameraPlane()
{
    const float far = 1e5f;
    const QList<DrawPolygon> polygons{
        quad({V(-far, 0, -far), V(-far, 0, far), V(far, 0, far), V(far, 0, -far)}, Qt::gray),
        quad({V(0, 0, 0), V(0, 10, 0), V(10, 10, 0)}, Qt::red), // wholly behind the camera
        quad({V(NAN, 0, 0), V(0, 10, 0), V(10, 10, 0)}, Qt::red),
    };
    const Camera camera{V(0, 50, 100), V(0, 10, 400), 60};
    const QImage picture = drawPolygons(polygons, camera, QSize(N, N), DrawOrder::Rover);
    const Frame frame(camera, N);
    int wrong = 0;
    for (int j = 0; j < N; ++j)
        for (int i = 0; i < N; ++i)
            wrong += frame.floorHit(i, j, N).has_value() != (picture.pixel(i, j) == QColor(Qt::gray).rgba());
    QVERIFY2(wrong <= N, qPrintable(QString::number(wrong)));
    QCOMPARE(picture.pixel(0, N - 1), QColor(Qt::gray).rgba());
    QCOMPARE(picture.pixel(N - 1, 0), 0u);
}

QTEST_GUILESS_MAIN(TestRasterizer)
#include "test_rasterizer.moc"
