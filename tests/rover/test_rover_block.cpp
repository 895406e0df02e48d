// Rover's block reader and block check on its standard cube full.block and on a
// sprite: every row changes one thing in a correct file and names each finding
// (E/W, block file line, text) that Rover, or Cubrix where Rover crashes or
// misbehaves, reports.
#include "RoverTestBlocks.h"
#include "rover/RoverBlockCheck.h"
#include "rover/RoverBlockReader.h"
#include "support/DataRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestRoverBlock : public QObject {
    Q_OBJECT
private slots:
    void findings_data();
    void findings();
    void model();
};

namespace {

// The blockset around the block: what its textures and sounds are to Rover.
std::optional<RoverTextureInfo> texture(const QString &entry)
{
    RoverTextureInfo info;
    info.status = RoverTextureInfo::Usable;
    const QString name = entry.toLower();
    if (name == "textures/cement.gif"_L1 || name == "textures/logo.gif"_L1)
        return info;
    if (name == "textures/png.gif"_L1)
        return RoverTextureInfo{RoverTextureInfo::NotGifOrJpeg, RoverTextureInfo::None, 0, 0, 0, false, u"PNG data"_s};
    if (name == "textures/big.gif"_L1)
        return RoverTextureInfo{RoverTextureInfo::TooLarge, RoverTextureInfo::Gif, 512, 256, 1, false, {}};
    if (name == "textures/cmyk.jpg"_L1)
        return RoverTextureInfo{RoverTextureInfo::Undefined, RoverTextureInfo::Jpeg, 64, 64, 1, false, {}};
    return std::nullopt;
}

RoverSoundEntry sound(const QString &entry)
{
    if (entry.compare("sounds/hum.wav"_L1, Qt::CaseInsensitive) == 0)
        return {true, {}};
    if (entry == "sounds/float.wav"_L1)
        return {false, u"not plain PCM"_s};
    return {false, u"not in the blockset"_s};
}

QString summary(const RoverFindings &findings)
{
    QStringList lines;
    for (const RoverFinding &f : findings)
        lines << (f.severity == RoverFinding::Error ? u"E"_s : u"W"_s) + QString::number(f.line) + u' ' + f.text;
    return lines.join(u'\n');
}

const QString defaultTail = u"; using default value for this attribute instead"_s;

} // namespace

void TestRoverBlock::findings_data()
{
    QTest::addColumn<QByteArray>("base");
    QTest::addColumn<QString>("pattern"); // every match is replaced
    addColumns<QString, QString>("replacement", "expected");

    const QByteArray F = fullBlock, S = spriteBlock;
    auto row = [](const char *name, const QByteArray &base, const QString &pattern, const QString &replacement,
                  const QString &expected) { addRow(name, base, pattern, replacement, expected); };
    const QString west = uR"(NAME="west" TEXTURE="cement.gif")"_s;
    const QString end = u"</BLOCK>"_s;

    row("full clean", F, {}, {}, {});
    row("sprite clean", S, {}, {}, {});
    row("CR line ends", QByteArray(F).replace("\r\n", "\r"), uR"(ROOT="1")"_s, uR"(ROOT="7")"_s,
        u"E33 Polygon reference number 7 is out of range"_s);
    row("1 xml declaration", F, u"<BLOCK NAME"_s, u"<?xml version=\"1.0\"?>\r\n<BLOCK NAME"_s,
        u"E1 Expected 'block' rather than '?xml'"_s);
    row("2 no end tag", F, u"</BLOCK>\r\n"_s, {}, u"E32 Unexpected end of file"_s);
    row("2 empty file", {}, {}, {}, u"E1 Unexpected end of file"_s);
    row("2 open comment", F, end, u"<!-- </BLOCK>"_s, u"E33 Unexpected end of file"_s);
    row("3 open quote", F, uR"(ROOT="1")"_s, uR"(ROOT="1)"_s, u"E32 String is missing closing quotation mark"_s);
    row("3 quote in text", F, u"</VERTICES>"_s, u"</VERTICES> it's"_s,
        u"E11 String is missing closing quotation mark"_s);
    row("4 not quoted", F, uR"(NAME="full")"_s, u"NAME=full"_s, u"E1 The value for parameter 'name' is not quoted"_s);
    row("4 bare word", F, u"<BLOCK "_s, u"<BLOCK full "_s, u"E1 Expected 'unknown' rather than 'NAME'"_s);
    row("4 value without name", F, uR"(NAME="full")"_s, uR"("full")"_s,
        u"E1 Expected an attribute name rather than 'full'"_s);
    row("5 block name", F, uR"(NAME="full" )"_s, {}, u"E1 Parameter 'name' is missing from tag 'block'"_s);
    row("5 exit href", F, end, u"<EXIT TARGET=\"x\"/>\r\n</BLOCK>"_s,
        u"E33 Parameter 'href' is missing from tag 'exit'"_s);
    row("6 name", F, uR"(NAME="full")"_s, uR"(NAME="full cube")"_s,
        u"E1 Expected a name containing only letters, digits and underscores as the value for attribute 'name'"_s);
    row("6 coords", F, uR"x(COORDS="(0,256,0)")x"_s, uR"x(COORDS="(0,256)")x"_s,
        u"E3 Expected a valid version number as the value for attribute 'coords'"_s);
    row("6 second tree", F, end, u"<BSP_TREE ROOT=\"x\"/>\r\n</BLOCK>"_s,
        u"E33 Expected a whole number as the value for attribute 'root'"_s);
    row("7 part closed", F, uR"(NAME="top" TEXTURE="cement.gif">)"_s, uR"(NAME="top" TEXTURE="cement.gif"/>)"_s,
        u"E13 Expected 'unknown' rather than '/>'"_s);
    row("7 sprite part open", S, u"/>"_s, u">"_s, u"E2 Expected 'unknown' rather than '>'"_s);
    row("8 wrong end tag", F, u"</VERTICES>"_s, u"</VERTEX>"_s,
        u"E11 Found end tag 'VERTEX' with no matching start tag"_s);
    row("8 quoted tag name", F, u"<BSP_TREE"_s, u"<\"BSP_TREE\""_s,
        u"E32 Expected a tag name rather than the quoted string 'BSP_TREE'"_s);
    row("9 vertex ref", F, uR"(REF="2" COORDS)"_s, uR"(REF="3" COORDS)"_s,
        u"E4 Vertex reference number 3 is out of sequence"_s);
    row("10 polygon ref", F, uR"(REF="2" VERTICES)"_s, uR"(REF="7" VERTICES)"_s,
        u"E17 Polygon reference number 7 is out of sequence"_s);
    row("11 vertex list", F, u"1,2,3,4"_s, u"1 2 3 4"_s,
        u"E14 Expected a list of vertex reference numbers as the value of parameter 'vertices'"_s);
    row("12 vertex range", F, u"1,2,3,4"_s, u"1,2,3,9"_s, u"E14 Vertex reference number 9 is out of range"_s);
    row("13 two vertices", F, uR"x(1,2,3,4" TEXCOORDS="(0,0),(0,1),(1,1),(1,0)")x"_s,
        uR"x(1,2" TEXCOORDS="(0,1),(0,0)")x"_s, u"E14 Polygon has less than 3 vertices"_s);
    row("14 five pairs", F, uR"x((1,1),(1,0)" REAR="2")x"_s, uR"x((1,1),(1,0),(0,0)" REAR="2")x"_s,
        u"E14 There are too many texture coordinates"_s);
    row("15 three pairs", F, uR"x(,(1,0)" REAR="2")x"_s, uR"x(" REAR="2")x"_s,
        u"E14 There are too few texture coordinates"_s);
    row("16 semicolon", F, uR"x("(0,0),(0,1),(1,1),(1,0)" REAR="2")x"_s, uR"x("(0;1),(0,0),(1,0),(1,1)" REAR="2")x"_s,
        u"E14 Expected a list of texture coordinates as the value of parameter 'texcoords'"_s);
    row("17 duplicate part", F, uR"(NAME="bottom")"_s, uR"(NAME="TOP")"_s, u"E16 Duplicate part name 'TOP'"_s);
    row("18 three faces", F, west, west + uR"( FACES="3")"_s, u"E28 A part must have 0, 1 or 2 faces per polygon"_s);
    row("19 parts first", F, u"VERTICES>"_s, u"VERTEXES>"_s, u"E12 Vertex list must appear before part list"_s);
    row("20 no vertices", F, u"~(?s)<VERTICES>.*</PARTS>\r\n"_s, {},
        u"E3 Vertex list was missing in block definition"_s);
    row("21 no parts", F, u"~(?s)<PARTS>.*</PARTS>\r\n"_s, {}, u"E13 Part list was missing in block definition"_s);
    row("22 sprite without part", S, u"<PART "_s, u"<PIECE "_s, u"E3 Missing part tag in sprite block definition"_s);
    row("23 negative rear", F, uR"(REAR="3")"_s, uR"(REAR="-1")"_s,
        u"E33 Polygon reference number -1 is out of range"_s);
    row("24 type sprite", F, u"structural"_s, u"sprite"_s,
        u"W1 Expected 'structural', 'multifaceted sprite', 'angled sprite', 'revolving sprite', 'facing sprite' or "
        "'player sprite' as the value for attribute 'type'"_s
            + defaultTail);
    row("24 faces 1.5", F, west, west + uR"( FACES="1.5")"_s,
        u"W28 Expected a whole number as the value for attribute 'faces'"_s + defaultTail);
    row("24 color red", F, west, west + uR"( COLOR="red")"_s,
        u"W28 Expected an RGB value in the form '(red,green,blue)' as the value for attribute 'colour'"_s
            + defaultTail);
    row("24 translucency", F, west, west + uR"( TRANSLUCENCY="50")"_s,
        u"W28 Expected a percentage as the value for attribute 'translucency'"_s + defaultTail);
    row("24 tiledx then scaled", F, west, west + uR"( STYLE="tiledx" style="scaled")"_s,
        u"W28 Expected 'tiled', 'scaled' or 'stretched' as the value for attribute 'style'"_s + defaultTail);
    row("24 first that parses counts", F, west, west + uR"( STYLE=" Stretched " STYLE="tile")"_s, {});
    row("24 light speed float", F, end, u"<LIGHT SPEED=\"fast\"/>\r\n</BLOCK>"_s,
        u"W33 Expected an angle in degrees, or two angles seperated by a comma as the value for attribute 'speed'"_s
            + defaultTail);
    row("25 missing texture", F, west, uR"(NAME="west" TEXTURE="Stone.GIF")"_s,
        u"W28 Unable to load image file textures/Stone.GIF: File not found (part 'west')"_s);
    row("25 absolute texture", F, west, uR"(NAME="west" TEXTURE="C:\cement.gif")"_s,
        u"W28 Unable to load image file C:\\cement.gif: File not found (part 'west')"_s);
    row("26 png", F, west, uR"(NAME="west" TEXTURE="png.gif")"_s,
        u"W28 File textures/png.gif is not a GIF or JPEG image (PNG data)"_s);
    row("27 too large", F, west, uR"(NAME="west" TEXTURE="big.gif")"_s,
        u"W28 Unable to load image file textures/big.gif: Image has a width or height greater than 256 pixels"_s);
    row("CMYK JPEG", F, west, uR"(NAME="west" TEXTURE="cmyk.jpg")"_s,
        u"E28 Rover cannot read textures/cmyk.jpg: a four-channel (CMYK or YCCK) JPEG overruns its line buffer"_s);
    row("28 at name", F, west, uR"(NAME="west" TEXTURE="@basic:logo.gif")"_s,
        u"W28 Invalid texture URL @basic:logo.gif"_s);
    row("29 light speed", F, end, u"<LIGHT SPEED=\"-1\"/>\r\n</BLOCK>"_s,
        u"W33 Light rotational speed must be greater than zero; using default speed instead"_s);
    row("30 missing sound", F, end, u"<SOUND FILE=\"gone.wav\"/>\r\n</BLOCK>"_s,
        u"W33 Unable to download wave file from gone.wav (not in the blockset)"_s);
    row("30 float sound", F, end, u"<SOUND FILE=\"float.wav\"/>\r\n</BLOCK>"_s,
        u"W33 Unable to download wave file from float.wav (not plain PCM)"_s);
    row("31 rolloff", F, end, u"<SOUND FILE=\"Hum.wav\" ROLLOFF=\"-2\"/>\r\n</BLOCK>"_s,
        u"W33 Sound rolloff must be greater than zero; using default rolloff of 1.0"_s);
    row("32 at sound", F, end, u"<SOUND FILE=\"@x.wav\"/>\r\n</BLOCK>"_s,
        u"W33 Invalid wave URL @x.wav\nW33 Unable to download wave file from @x.wav"_s);
    row("33 cycle", F, uR"(REF="6" VERTICES)"_s, uR"(REF="6" REAR="1" VERTICES)"_s,
        u"E33 Polygon 1 is reached from itself in the BSP tree: Rover crashes on a BSP tree with a cycle"_s);
    row("34 stream without texture", F, west, uR"(NAME="west" STREAM="tv")"_s,
        u"W28 Part 'west' has a stream but no texture: Rover then draws with a texture it never loaded, with "
        "unpredictable results"_s);
    row("no tree", F, u"<BSP_TREE ROOT=\"1\"/>\r\n"_s, {},
        u"W1 Rover draws full with sorting errors: it has no BSP tree"_s);
    row("root 0", F, uR"(ROOT="1")"_s, uR"(ROOT="0")"_s,
        u"W1 Rover draws full with sorting errors: it has no BSP tree"_s);
    row("movable without tree", F, u"<BSP_TREE ROOT=\"1\"/>"_s, u"<PARAM MOVABLE=\"yes\"/>"_s, {});
    row("unknown tags skipped", F, end, u"<SPRITE a='1'>\r\n<PART NAME=\"top\">\r\n</SPRITE>\r\n<PART/>\r\n</BLOCK>"_s,
        {});
    row("only the first tree counts", F, end, u"<BSP_TREE ROOT=\"0\"/>\r\n</BLOCK>"_s, {});
    row("delay range", F, end, u"<SOUND FILE=\"hum.wav\" DELAY=\"1..2.5\"/>\r\n</BLOCK>"_s, {});
    row("second vertices skipped", F, end, u"<VERTICES><VERTEX REF=\"9\"/></VERTICES>\r\n</BLOCK>"_s, {});
    row("comments between tokens", F, uR"(<BSP_TREE ROOT="1"/>)"_s, u"<!--\r\n--><BSP_TREE <!-- x --> ROOT=\"7\"/>"_s,
        u"E34 Polygon reference number 7 is out of range"_s);
    row("after end never read", F, u"</BLOCK>\r\n"_s, u"</BLOCK>\r\n<BLOCK \"open"_s, {});
}

void TestRoverBlock::findings()
{
    QFETCH(QByteArray, base);
    QFETCH(QString, pattern);
    QFETCH(QString, replacement);
    QFETCH(QString, expected);
    const QByteArray bytes = changedBlock(base, pattern, replacement);
    QVERIFY2(pattern.isEmpty() || bytes != base, "the row changes nothing");
    const RoverFindings found = checkRoverBlock(bytes, u"full.block"_s, texture, sound);
    QCOMPARE(summary(found), expected);
}

// What the reader keeps for drawing and checking.
void TestRoverBlock::model()
{
    const RoverBlock full = readRoverBlock(fullBlock).block;
    QCOMPARE(full.vertices.size(), 8);
    QCOMPARE(full.vertices[2], (RoverPoint{256, 256, 256}));
    QCOMPARE(full.parts.size(), 6);
    QCOMPARE(full.parts[5].line, 28);
    QCOMPARE(full.polygons.size(), 6);
    QCOMPARE(full.polygons[5].line, 29);
    QCOMPARE(full.polygons[5].part, 5);
    QCOMPARE(full.polygons[0].rear, 2);
    QCOMPARE(full.bspRoot, 1);

    QByteArray player = QByteArray(spriteBlock).replace("angled sprite", "Player Sprite");
    player.replace("</BLOCK>", "<PARAM ANGLE=\"-90\" SIZE=\"(64,128)\" SOLID=\"no\"/>\r\n</BLOCK>");
    const RoverBlockFile sprite = readRoverBlock(player);
    QVERIFY(sprite.findings.isEmpty());
    QCOMPARE(sprite.block.type, RoverBlock::PlayerSprite);
    QCOMPARE(sprite.block.parts.size(), 1);
    QCOMPARE(sprite.block.parts[0].faces, 2);
    QCOMPARE(sprite.block.spriteAngle, 270.0);
    QCOMPARE(sprite.block.spriteSize, QSize(64, 128));
    QCOMPARE(sprite.block.align, RoverBlock::Centre);
    QVERIFY(!sprite.block.solid);
}

QTEST_GUILESS_MAIN(TestRoverBlock)
#include "test_rover_block.moc"
