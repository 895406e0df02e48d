#include "rover/RoverBlockReader.h"

#include "rover/RoverBlockBsp.h"
#include "rover/RoverBlockTokens.h"
#include "rover/RoverBlockValues.h"
#include "storage/Cp1252.h"

#include <QSet>

#include <span>

using namespace Qt::StringLiterals;

namespace {

using Markup = RoverBlockTokens::Markup;
using V = RoverBlockValue;

struct Rule {
    const char *name;
    RoverBlockValue type;
    bool required = false;
};
using Rules = std::span<const Rule>;
// The accepted values of a tag's attributes, in rule order.
using Values = QList<std::optional<QByteArray>>;

constexpr Rule blockRules[] = {{"name", V::Name, true}, {"type", V::BlockType}, {"entrance", V::Boolean}};
constexpr Rule vertexRules[] = {{"ref", V::Integer, true}, {"coords", V::Coordinates, true}};
// A sprite's PART reads the first six.
constexpr Rule partRules[] = {
    {"name", V::Name, true},         {"texture", V::String},     {"stream", V::Name},   {"colour", V::Rgb},
    {"translucency", V::Percentage}, {"style", V::TextureStyle}, {"faces", V::Integer}, {"angle", V::Degrees}};
constexpr Rule polygonRules[] = {{"ref", V::Integer, true},
                                 {"vertices", V::String, true},
                                 {"texcoords", V::String, true},
                                 {"front", V::Integer},
                                 {"rear", V::Integer}};
constexpr Rule bspRules[] = {{"root", V::Integer, true}};
constexpr Rule paramRules[] = {{"orientation", V::Orientation}, {"solid", V::Boolean}, {"movable", V::Boolean}};
constexpr Rule spriteParamRules[] = {{"angle", V::Degrees}, {"speed", V::Float},     {"align", V::VerticalAlignment},
                                     {"solid", V::Boolean}, {"movable", V::Boolean}, {"size", V::SpriteSize}};
constexpr Rule pointLightRules[] = {{"style", V::PointLightStyle},
                                    {"position", V::Coordinates},
                                    {"brightness", V::PercentageRange},
                                    {"radius", V::Radius},
                                    {"speed", V::Float},
                                    {"flood", V::Boolean},
                                    {"colour", V::Rgb}};
constexpr Rule spotLightRules[] = {{"style", V::SpotLightStyle},
                                   {"position", V::Coordinates},
                                   {"brightness", V::Percentage},
                                   {"radius", V::Radius},
                                   {"direction", V::DirectionRange},
                                   {"speed", V::Float},
                                   {"cone", V::Degrees},
                                   {"flood", V::Boolean},
                                   {"colour", V::Rgb}};
constexpr Rule soundRules[] = {{"file", V::String},       {"stream", V::Name},       {"radius", V::Radius},
                               {"volume", V::Percentage}, {"playback", V::Playback}, {"delay", V::DelayRange},
                               {"flood", V::Boolean},     {"rolloff", V::Float}};
constexpr Rule exitRules[] = {
    {"href", V::String, true}, {"target", V::String}, {"trigger", V::ExitTrigger}, {"text", V::String}};

QString latin(QByteArrayView bytes)
{
    return QString::fromLatin1(bytes);
}

QString text(const std::optional<QByteArray> &value)
{
    return value ? fromCp1252(*value) : QString();
}

bool yes(const std::optional<QByteArray> &value, bool fallback)
{
    return value ? roverKeyword(V::Boolean, *value) == 0 : fallback;
}

// The attributes a sprite's PART shares with a structural one.
RoverBlockPart partOf(const Values &v, int line)
{
    constexpr RoverBlockPart::Style styles[] = {RoverBlockPart::Tiled, RoverBlockPart::Scaled,
                                                RoverBlockPart::Stretched};
    RoverBlockPart part;
    part.name = text(v[0]);
    part.texture = text(v[1]);
    part.stream = text(v[2]);
    if (v[3])
        part.colour = roverRgb(*v[3]);
    part.translucency = v[4] ? *roverPercentage(*v[4]) : 0;
    part.style = v[5] ? styles[*roverKeyword(V::TextureStyle, *v[5])] : RoverBlockPart::Stretched;
    part.line = line;
    return part;
}

class Reader {
public:
    explicit Reader(QByteArrayView bytes) : m_tokens(bytes) {}
    RoverBlockFile read();

private:
    enum Close { Open, SelfClose };
    bool readTag(const Markup &tag, Rules rules, Close close, Values &values);
    bool skipTag(const Markup &tag);
    template <typename OnTag>
    bool readContent(const QByteArray &parent, OnTag onTag);
    bool structuralTag(const Markup &tag);
    bool vertexTag(const Markup &tag);
    bool partTag(const Markup &tag);
    bool polygonTag(const Markup &tag, int part);
    bool spriteTag(const Markup &tag);
    bool sharedTag(const Markup &tag);
    void finishStructural();
    void finishSprite();
    bool fail(const QString &text) { return m_tokens.error(m_tokens.line(), text), false; }

    RoverBlockTokens m_tokens;
    RoverBlock m_block;
    bool m_sawVertices = false;
    bool m_sawParts = false;
    bool m_sawBspTree = false;
    bool m_sawParam = false;
    bool m_sawPart = false;
    bool m_sawAlign = false;
    QSet<QByteArray> m_partNames;
};

RoverBlockFile Reader::read()
{
    const Markup first = m_tokens.next(false);
    if (first.kind == Markup::EndOfFile)
        m_tokens.error(m_tokens.lastLine(), u"Unexpected end of file"_s);
    if (first.kind == Markup::EndOfFile || first.kind == Markup::Failed)
        return {m_block, m_tokens.takeFindings()};
    if (first.kind != Markup::StartTag || first.name != "block") {
        const QByteArray token = first.kind == Markup::EndTag ? "/" + first.written : first.written;
        m_tokens.error(first.line, u"Expected 'block' rather than '%1'"_s.arg(fromCp1252(token)));
        return {m_block, m_tokens.takeFindings()};
    }
    m_block.line = first.line;
    Values v;
    if (readTag(first, blockRules, Open, v)) {
        m_block.name = text(v[0]);
        if (v[1])
            m_block.type = RoverBlock::Type(*roverKeyword(V::BlockType, *v[1]));
        m_block.entrance = yes(v[2], false);
        if (!m_block.isSprite()) {
            if (readContent("block", [this](const Markup &tag) { return structuralTag(tag); }))
                finishStructural();
        } else if (readContent("block", [this](const Markup &tag) { return spriteTag(tag); })) {
            finishSprite();
        }
    }
    return {m_block, m_tokens.takeFindings()}; // whatever follows </BLOCK> is never read
}

bool Reader::readTag(const Markup &tag, Rules rules, Close close, Values &values)
{
    values = Values(qsizetype(rules.size()));
    RoverBlockTokens::Attribute a;
    RoverBlockTokens::Item item;
    while ((item = m_tokens.nextAttribute(a)) == RoverBlockTokens::Item::Attribute) {
        for (std::size_t r = 0; r < rules.size(); ++r) {
            const Rule &rule = rules[r];
            if (a.name != rule.name || values[qsizetype(r)])
                continue; // the first occurrence that parses counts
            if (isRoverBlockValue(rule.type, a.value)) {
                values[qsizetype(r)] = a.value;
                break;
            }
            const QString message = u"Expected %1 as the value for attribute '%2'"_s.arg(
                latin(roverBlockValueDescription(rule.type)), latin(rule.name));
            if (rule.required)
                return m_tokens.error(a.line, message), false;
            m_tokens.warning(a.line, message + u"; using default value for this attribute instead"_s);
            break;
        }
    }
    if (item == RoverBlockTokens::Item::Failed)
        return false;
    if ((item == RoverBlockTokens::Item::Open) != (close == Open))
        return fail(
            u"Expected 'unknown' rather than '%1'"_s.arg(item == RoverBlockTokens::Item::Open ? u">"_s : u"/>"_s));
    for (std::size_t r = 0; r < rules.size(); ++r)
        if (rules[r].required && !values[qsizetype(r)])
            return fail(u"Parameter '%1' is missing from tag '%2'"_s.arg(latin(rules[r].name), latin(tag.name)));
    return true;
}

bool Reader::skipTag(const Markup &tag)
{
    RoverBlockTokens::Attribute ignored;
    RoverBlockTokens::Item item;
    while ((item = m_tokens.nextAttribute(ignored)) == RoverBlockTokens::Item::Attribute) {
    }
    if (item == RoverBlockTokens::Item::Failed)
        return false;
    return item == RoverBlockTokens::Item::SelfClose || m_tokens.skipContent(tag.name);
}

// Hands each start tag up to `parent`'s end tag to `onTag`.
template <typename OnTag>
bool Reader::readContent(const QByteArray &parent, OnTag onTag)
{
    for (;;) {
        const Markup m = m_tokens.next(true);
        if (m.kind == Markup::Failed)
            return false;
        if (m.kind == Markup::EndOfFile)
            return m_tokens.error(m_tokens.lastLine(), u"Unexpected end of file"_s), false;
        if (m.kind == Markup::EndTag) {
            if (m.name == parent)
                return true;
            return m_tokens.error(m.line,
                                  u"Found end tag '%1' with no matching start tag"_s.arg(fromCp1252(m.written))),
                   false;
        }
        if (!onTag(m))
            return false;
    }
}

bool Reader::structuralTag(const Markup &tag)
{
    Values v;
    if (tag.name == "vertices" && !m_sawVertices) {
        m_sawVertices = true;
        return readTag(tag, {}, Open, v) && readContent("vertices", [this](const Markup &t) { return vertexTag(t); });
    }
    if (tag.name == "parts" && !m_sawParts) {
        if (!readTag(tag, {}, Open, v))
            return false;
        if (!m_sawVertices)
            return fail(u"Vertex list must appear before part list"_s);
        m_sawParts = true;
        return readContent("parts", [this](const Markup &t) { return partTag(t); });
    }
    if (tag.name == "bsp_tree") {
        if (!readTag(tag, bspRules, SelfClose, v))
            return false;
        if (!m_sawBspTree)
            m_block.bspRoot = *roverInteger(*v[0]);
        m_sawBspTree = true;
        return true;
    }
    if (tag.name == "param") {
        if (!readTag(tag, paramRules, SelfClose, v))
            return false;
        if (!m_sawParam) {
            if (v[0])
                m_block.orientation = *roverOrientation(*v[0]);
            m_block.solid = yes(v[1], true);
            m_block.movable = yes(v[2], false);
        }
        m_sawParam = true;
        return true;
    }
    return sharedTag(tag);
}

bool Reader::vertexTag(const Markup &tag)
{
    if (tag.name != "vertex")
        return skipTag(tag);
    Values v;
    if (!readTag(tag, vertexRules, SelfClose, v))
        return false;
    const int ref = *roverInteger(*v[0]);
    if (ref != m_block.vertices.size() + 1)
        return fail(u"Vertex reference number %1 is out of sequence"_s.arg(ref));
    m_block.vertices.append(*roverCoordinates(*v[1]));
    return true;
}

bool Reader::partTag(const Markup &tag)
{
    if (tag.name != "part")
        return skipTag(tag);
    Values v;
    if (!readTag(tag, partRules, Open, v))
        return false;
    const QByteArray lowerName = v[0]->toLower();
    if (m_partNames.contains(lowerName))
        return fail(u"Duplicate part name '%1'"_s.arg(fromCp1252(*v[0])));
    m_partNames.insert(lowerName);
    const int faces = v[6] ? *roverInteger(*v[6]) : 1;
    if (faces < 0 || faces > 2)
        return fail(u"A part must have 0, 1 or 2 faces per polygon"_s);
    RoverBlockPart part = partOf(v, tag.line);
    part.faces = faces;
    part.angle = v[7] ? *roverDegrees(*v[7]) : 0;
    m_block.parts.append(part);
    const int index = int(m_block.parts.size() - 1);
    return readContent("part", [this, index](const Markup &t) { return polygonTag(t, index); });
}

bool Reader::polygonTag(const Markup &tag, int part)
{
    if (tag.name != "polygon")
        return skipTag(tag);
    Values v;
    if (!readTag(tag, polygonRules, SelfClose, v))
        return false;
    RoverBlockPolygon polygon;
    polygon.ref = *roverInteger(*v[0]);
    if (polygon.ref != m_block.polygons.size() + 1)
        return fail(u"Polygon reference number %1 is out of sequence"_s.arg(polygon.ref));
    const auto refs = roverVertexList(*v[1]);
    if (!refs)
        return fail(u"Expected a list of vertex reference numbers as the value of parameter 'vertices'"_s);
    for (int ref : *refs)
        if (ref < 1 || ref > m_block.vertices.size())
            return fail(u"Vertex reference number %1 is out of range"_s.arg(ref));
    if (refs->size() < 3)
        return fail(u"Polygon has less than 3 vertices"_s);
    const RoverTexCoordList coords = roverTexCoordList(*v[2], refs->size());
    switch (coords.outcome) {
    case RoverTexCoordList::TooMany: return fail(u"There are too many texture coordinates"_s);
    case RoverTexCoordList::TooFew: return fail(u"There are too few texture coordinates"_s);
    case RoverTexCoordList::NotAList:
        return fail(u"Expected a list of texture coordinates as the value of parameter 'texcoords'"_s);
    case RoverTexCoordList::Ok: break;
    }
    polygon.vertices = *refs;
    polygon.texCoords = coords.coords;
    polygon.front = v[3] ? *roverInteger(*v[3]) : 0;
    polygon.rear = v[4] ? *roverInteger(*v[4]) : 0;
    polygon.part = part;
    polygon.line = tag.line;
    m_block.polygons.append(polygon);
    return true;
}

bool Reader::spriteTag(const Markup &tag)
{
    Values v;
    if (tag.name == "part") {
        if (!readTag(tag, Rules(partRules).first(6), SelfClose, v))
            return false;
        if (!m_sawPart) {
            RoverBlockPart part = partOf(v, tag.line);
            part.faces = 2;
            m_block.parts.append(part);
        }
        m_sawPart = true;
        return true;
    }
    if (tag.name == "param") {
        if (!readTag(tag, spriteParamRules, SelfClose, v))
            return false;
        if (!m_sawParam) {
            m_block.spriteAngle = v[0] ? *roverDegrees(*v[0]) : 0;
            m_block.spriteSpeed = v[1] ? *roverFloat(*v[1]) : 0;
            constexpr RoverBlock::Align aligns[] = {RoverBlock::Top, RoverBlock::Centre, RoverBlock::Centre,
                                                    RoverBlock::Bottom};
            if (v[2])
                m_block.align = aligns[*roverKeyword(V::VerticalAlignment, *v[2])];
            m_sawAlign = v[2].has_value();
            m_block.solid = yes(v[3], true);
            m_block.movable = yes(v[4], false);
            if (v[5])
                m_block.spriteSize = roverSpriteSize(*v[5]);
        }
        m_sawParam = true;
        return true;
    }
    return sharedTag(tag);
}

// Lights, SOUND and EXIT, read alike in both kinds of block; anything else is
// skipped with its content.
bool Reader::sharedTag(const Markup &tag)
{
    Values v;
    const bool point = tag.name == "point_light" || tag.name == "light";
    if (point || tag.name == "spot_light") {
        if (!readTag(tag, point ? Rules(pointLightRules) : Rules(spotLightRules), SelfClose, v))
            return false;
        if (m_block.light.kind != RoverBlockLight::None)
            return true;
        m_block.light.kind = point ? RoverBlockLight::Point : RoverBlockLight::Spot;
        m_block.light.line = tag.line;
        const std::optional<QByteArray> &speed = v[point ? 4 : 5];
        if (speed && *roverFloat(*speed) < 0)
            m_tokens.warning(m_tokens.line(),
                             u"Light rotational speed must be greater than zero; using default speed instead"_s);
        else if (speed)
            m_block.light.speed = roverFloat(*speed);
        return true;
    }
    if (tag.name == "sound") {
        if (!readTag(tag, soundRules, SelfClose, v))
            return false;
        if (!m_block.sound.present) {
            m_block.sound.present = true;
            m_block.sound.file = text(v[0]);
            if (v[7])
                m_block.sound.rolloff = roverFloat(*v[7]);
            m_block.sound.line = tag.line;
        }
        return true;
    }
    if (tag.name == "exit") {
        if (!readTag(tag, exitRules, SelfClose, v))
            return false;
        if (!m_block.exit.present) {
            m_block.exit.present = true;
            m_block.exit.href = text(v[0]);
            m_block.exit.target = text(v[1]);
            m_block.exit.line = tag.line;
        }
        return true;
    }
    return skipTag(tag);
}

void Reader::finishStructural()
{
    if (!m_sawVertices) {
        fail(u"Vertex list was missing in block definition"_s);
        return;
    }
    if (!m_sawParts) {
        fail(u"Part list was missing in block definition"_s);
        return;
    }
    const RoverBspTree tree = roverBspTree(m_block);
    if (tree.problem == RoverBspTree::OutOfRange)
        fail(u"Polygon reference number %1 is out of range"_s.arg(tree.ref));
    else if (tree.problem == RoverBspTree::Cycle)
        fail(u"Polygon %1 is reached from itself in the BSP tree: Rover crashes on a BSP tree with a cycle"_s.arg(
            tree.ref));
}

void Reader::finishSprite()
{
    if (!m_sawPart)
        fail(u"Missing part tag in sprite block definition"_s);
    if (!m_sawAlign && m_block.type == RoverBlock::PlayerSprite)
        m_block.align = RoverBlock::Centre;
}

} // namespace

RoverBlockFile readRoverBlock(QByteArrayView bytes)
{
    return Reader(bytes).read();
}
