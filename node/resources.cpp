// The library's pictures. Each drawing is a grid of palette letters, one per pixel, row after
// row; a picture places one or two drawings in its frame (32 x 32 for icons, 16 x 16 for
// bitmaps). Icons stay transparent around their drawings; bitmaps have a white ground.
#include "node/resources.h"

#include <array>
#include <string_view>

namespace {

// Palette letters, in 0x00BBGGRR. '.' is no pixel.
constexpr COLORREF PaletteColor(char letter) {
    switch (letter) {
        case 'k': return 0x000000;  // black
        case 'w': return 0xFFFFFF;  // white
        case 'g': return 0x808080;  // grey
        case 'l': return 0xC0C0C0;  // light grey
        case 'r': return 0x0000D0;  // red
        case 'b': return 0xD07000;  // blue
        case 'n': return 0x800000;  // navy
        case 'c': return 0xF0C060;  // light blue
        case 'y': return 0x40E0FF;  // yellow
        case 'o': return 0x0098E0;  // orange
        case 'G': return 0x30B030;  // green
        case 'd': return 0x006000;  // dark green
        case 'm': return 0x803080;  // purple
        default: return kVemNoColor;
    }
}

struct Drawing {
    int width;
    int height;
    std::string_view pixels;  // width x height letters

    constexpr bool IsValid() const {
        if (pixels.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) return false;
        for (char letter : pixels) {
            if (letter != '.' && PaletteColor(letter) == kVemNoColor) return false;
        }
        return true;
    }
    COLORREF At(int x, int y) const {
        if (x < 0 || y < 0 || x >= width || y >= height) return kVemNoColor;
        return PaletteColor(
            pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]);
    }
};

// ---- drawings ----------------------------------------------------------------------------------

// One row of letters a line, so that the pictures stay visible.
// clang-format off
constexpr Drawing kMinusBox{9, 9,
    "ggggggggg"
    "gwwwwwwwg"
    "gwwwwwwwg"
    "gwwwwwwwg"
    "gwkkkkkwg"
    "gwwwwwwwg"
    "gwwwwwwwg"
    "gwwwwwwwg"
    "ggggggggg"};

constexpr Drawing kPlusBox{9, 9,
    "ggggggggg"
    "gwwwwwwwg"
    "gwwwkwwwg"
    "gwwwkwwwg"
    "gwkkkkkwg"
    "gwwwkwwwg"
    "gwwwkwwwg"
    "gwwwwwwwg"
    "ggggggggg"};

constexpr Drawing kLeaf{7, 7,
    "...k..."
    "..kGk.."
    ".kGGGk."
    "kGGGGGk"
    ".kGGGk."
    "..kGk.."
    "...k..."};

constexpr Drawing kGlobe{7, 7,
    ".kkkkk."
    "kGGbGGk"
    "kGbbbGk"
    "kbbGbbk"
    "kGbbbGk"
    "kGGbGGk"
    ".kkkkk."};

constexpr Drawing kCube{16, 16,
    "................"
    "....kkkkkkkkkk.."
    "...kcccccccckbk."
    "..kcccccccckbnk."
    ".kkkkkkkkkkbnnk."
    ".kbbbbbbbbknnnk."
    ".kbbbbbbbbknnnk."
    ".kbbbbbbbbknnnk."
    ".kbbbbbbbbknnnk."
    ".kbbbbbbbbknnnk."
    ".kbbbbbbbbknnk.."
    ".kbbbbbbbbknk..."
    ".kbbbbbbbbkk...."
    ".kkkkkkkkkk....."
    "................"
    "................"};

constexpr Drawing kProgram{16, 16,
    "..kkkkkkkkk....."
    "..kwwwwwwwkk...."
    "..kwwwwwwwkwk..."
    "..kwwwwwwwkkkk.."
    "..kwbbbbwwwwwk.."
    "..kwbwwwbwwwwk.."
    "..kwbwwwbwwwwk.."
    "..kwbbbbwwwwwk.."
    "..kwbwwwwwwwwk.."
    "..kwbwwwwwwwwk.."
    "..kwbwwwwwwwwk.."
    "..kwwwwwwwwwwk.."
    "..kwggggggggwk.."
    "..kwwwwwwwwwwk.."
    "..kkkkkkkkkkkk.."
    "................"};

constexpr Drawing kDocument{16, 16,
    "..kkkkkkkkk....."
    "..kwwwwwwwkk...."
    "..kwwwwwwwkwk..."
    "..kwwwwwwwkkkk.."
    "..kwggggggwwwk.."
    "..kwwwwwwwwwwk.."
    "..kwggggggggwk.."
    "..kwwwwwwwwwwk.."
    "..kwggggggwwwk.."
    "..kwwwwwwwwwwk.."
    "..kwggggggggwk.."
    "..kwwwwwwwwwwk.."
    "..kwggggwwwwwk.."
    "..kwwwwwwwwwwk.."
    "..kkkkkkkkkkkk.."
    "................"};

constexpr Drawing kFunctionBlock{16, 16,
    "................"
    "................"
    "...kkkkkkkkkk..."
    "...kyyyyyyyyk..."
    "kkkkyykkkkyykkkk"
    "...kyykyyyyyk..."
    "...kyykkkyyyk..."
    "kkkkyykyyyyykkkk"
    "...kyykyyyyyk..."
    "...kyyyyyyyyk..."
    "kkkkyyyyyyyykkkk"
    "...kyyyyyyyyk..."
    "...kkkkkkkkkk..."
    "................"
    "................"
    "................"};

constexpr Drawing kFunction{16, 16,
    "................"
    "................"
    "..kkkkkkkkkkkk.."
    "..kwwwwwwwwwwk.."
    "..kwwwwwbbbwwk.."
    "..kwwwwbwwwwwk.."
    "..kwwwwbwwwwwk.."
    "..kwwbbbbbwwwk.."
    "..kwwwwbwwwwwk.."
    "..kwwwwbwwwwwk.."
    "..kwwwbwwwwwwk.."
    "..kwwwbwwwwwwk.."
    "..kwbbwwwwwwwk.."
    "..kwwwwwwwwwwk.."
    "..kkkkkkkkkkkk.."
    "................"};

constexpr Drawing kVariable{16, 16,
    "................"
    "................"
    "................"
    "................"
    "..kkkkkkkkkkkk.."
    "..kwwwwwwwwwwk.."
    "..kwrwwwrwwwwk.."
    "..kwwrwrwwwwwk.."
    "..kwwwrwwwwwwk.."
    "..kwwrwrwwwwwk.."
    "..kwrwwwrwwwwk.."
    "..kwwwwwwwwwwk.."
    "..kkkkkkkkkkkk.."
    "................"
    "................"
    "................"};

constexpr Drawing kArray{16, 16,
    "................"
    "................"
    "..kkkkkkkkkkkkk."
    "..kccckccckccck."
    "..kccckccckccck."
    "..kccckccckccck."
    "..kkkkkkkkkkkkk."
    "..kwwwkwwwkwwwk."
    "..kwwwkwwwkwwwk."
    "..kwwwkwwwkwwwk."
    "..kkkkkkkkkkkkk."
    "..kwwwkwwwkwwwk."
    "..kwwwkwwwkwwwk."
    "..kwwwkwwwkwwwk."
    "..kkkkkkkkkkkkk."
    "................"};

constexpr Drawing kStructure{16, 16,
    "................"
    "................"
    "................"
    "..kkkkkkkkkkkk.."
    "..kmmmmmmmmmmk.."
    "..kkkkkkkkkkkk.."
    "..kwbbwggggwwk.."
    "..kwwwwwwwwwwk.."
    "..kwbbwggggwwk.."
    "..kwwwwwwwwwwk.."
    "..kwbbwggggwwk.."
    "..kwwwwwwwwwwk.."
    "..kkkkkkkkkkkk.."
    "................"
    "................"
    "................"};

constexpr Drawing kFolder{16, 16,
    "................"
    "................"
    "................"
    ".kkkkk.........."
    "kyyyyyk........."
    "kyyyyyykkkkkkkk."
    "kyyyyyyyyyyyyyk."
    "kkkkkkkkkkkkkkk."
    "koooooooooooook."
    "koooooooooooook."
    "koooooooooooook."
    "koooooooooooook."
    "koooooooooooook."
    "koooooooooooook."
    "kkkkkkkkkkkkkkk."
    "................"};

constexpr Drawing kChip{16, 16,
    "................"
    "....k.k.k.k.k..."
    "....k.k.k.k.k..."
    "...kkkkkkkkkkk.."
    "...knnnnnnnnnk.."
    ".kkknnnnnnnnnkkk"
    "...knnnnnnnnnk.."
    ".kkknwnnnnnnnkkk"
    "...knnnnnnnnnk.."
    ".kkknnnnnnnnnkkk"
    "...knnnnnnnnnk.."
    ".kkknnnnnnnnnkkk"
    "...knnnnnnnnnk.."
    "...kkkkkkkkkkk.."
    "....k.k.k.k.k..."
    "....k.k.k.k.k..."};

constexpr Drawing kClock{16, 16,
    "................"
    ".....kkkkkk....."
    "...kkwwwwwwkk..."
    "..kwwwwkwwwwwk.."
    "..kwwwwkwwwwwk.."
    ".kwwwwwkwwwwwwk."
    ".kwwwwwkwwwwwwk."
    ".kwwwwwkkkkkwwk."
    ".kwwwwwwwwwwwwk."
    ".kwwwwwwwwwwwwk."
    "..kwwwwwwwwwwk.."
    "..kwwwwwwwwwwk.."
    "...kkwwwwwwkk..."
    ".....kkkkkk....."
    "................"
    "................"};

constexpr Drawing kRack{16, 16,
    "................"
    "..kkkkkkkkkkkk.."
    "..kllllllllllk.."
    "..klkkkkkkkklk.."
    "..klkGGkkrrklk.."
    "..klkkkkkkkklk.."
    "..kllllllllllk.."
    "..klkkkkkkkklk.."
    "..klkGGkkGGklk.."
    "..klkkkkkkkklk.."
    "..kllllllllllk.."
    "..klkkkkkkkklk.."
    "..klkyykkGGklk.."
    "..klkkkkkkkklk.."
    "..kllllllllllk.."
    "..kkkkkkkkkkkk.."};

constexpr Drawing kHourglass{16, 16,
    "................"
    "...kkkkkkkkkk..."
    "....kyyyyyyk...."
    "....kyyyyyyk...."
    ".....kyyyyk....."
    "......kyyk......"
    ".......kk......."
    ".......kk......."
    "......kwwk......"
    ".....kwwwwk....."
    "....kwwyywwk...."
    "....kwyyyywk...."
    "....kyyyyyyk...."
    "...kkkkkkkkkk..."
    "................"
    "................"};

constexpr Drawing kGear{16, 16,
    "................"
    "......gggg......"
    "..gg..gggg..gg.."
    "..gggggggggggg.."
    "...gggggggggg..."
    "...ggg....ggg..."
    ".gggg......gggg."
    ".gggg......gggg."
    ".gggg......gggg."
    ".gggg......gggg."
    "...ggg....ggg..."
    "...gggggggggg..."
    "..gggggggggggg.."
    "..gg..gggg..gg.."
    "......gggg......"
    "................"};

constexpr Drawing kDisk{16, 16,
    "................"
    ".kkkkkkkkkkkkkk."
    ".knnwwwwwwwwnnk."
    ".knnwwwwwwwwnnk."
    ".knnwwwwwwwwnnk."
    ".knnwwwwwwwwnnk."
    ".knnnnnnnnnnnnk."
    ".knnnnnnnnnnnnk."
    ".knnnllllllnnnk."
    ".knnnlnnllllnnk."
    ".knnnlnnllllnnk."
    ".knnnllllllnnnk."
    ".kkkkkkkkkkkkkk."
    "................"
    "................"
    "................"};

constexpr Drawing kCheck{16, 16,
    "................"
    "................"
    "............dd.."
    "...........ddd.."
    "..........ddd..."
    ".........ddd...."
    "..dd....ddd....."
    "..ddd..ddd......"
    "...ddddd........"
    "....ddd........."
    ".....d.........."
    "................"
    "................"
    "................"
    "................"
    "................"};

constexpr Drawing kCross{16, 16,
    "................"
    "................"
    "..rr........rr.."
    "..rrr......rrr.."
    "...rrr....rrr..."
    "....rrr..rrr...."
    ".....rrrrrr....."
    "......rrrr......"
    "......rrrr......"
    ".....rrrrrr....."
    "....rrr..rrr...."
    "...rrr....rrr..."
    "..rrr......rrr.."
    "..rr........rr.."
    "................"
    "................"};
// clang-format on

constexpr std::array kAllDrawings{&kMinusBox,      &kPlusBox,  &kLeaf,      &kGlobe, &kCube,      &kProgram, &kDocument,
                                  &kFunctionBlock, &kFunction, &kVariable,  &kArray, &kStructure, &kFolder,  &kChip,
                                  &kClock,         &kRack,     &kHourglass, &kGear,  &kDisk,      &kCheck,   &kCross};

constexpr bool AllDrawingsValid() {
    for (const Drawing* drawing : kAllDrawings) {
        if (!drawing->IsValid()) return false;
    }
    return true;
}
static_assert(AllDrawingsValid(), "a drawing has the wrong size or a letter outside the palette");

// ---- pictures by number --------------------------------------------------------------------------

struct Placement {
    const Drawing* drawing = nullptr;
    int x = 0;
    int y = 0;
};

struct Picture {
    unsigned id;
    Placement base;
    Placement overlay;  // drawn over the base
};

constexpr int kIconSize = 32;
constexpr int kBitmapSize = 16;

constexpr Picture kIcons[] = {
    {102, {&kMinusBox}, {}},  // expand symbol, expanded
    {113, {&kPlusBox}, {}},   // expand symbol, collapsed
    {115, {&kFunctionBlock}, {}},
    {116, {&kDocument}, {}},
    {117, {&kCube}, {}},  // base node, POU
    {118, {&kProgram}, {}},
    {119, {&kFolder}, {}},  // project
    {121, {&kChip}, {}},    // resource, executable
    {122, {&kClock}, {}},   // task, task container, TUI task
    {123, {&kHourglass}, {}},
    {124, {&kFunction}, {}},
    {125, {&kVariable}, {}},  // variable, function block instance
    {129, {&kArray}, {}},
    {130, {&kStructure}, {}},
    {132, {&kGear}, {}},
    {133, {&kDisk}, {}},
    {134, {&kCheck}, {}},
    {135, {&kCross}, {}},
    {137, {&kProgram}, {&kGlobe, 9, 9}},  // program with the global flag
    {138, {&kRack}, {}},                  // configuration
};

constexpr Picture kBitmaps[] = {
    {111, {&kDocument}, {}},       {112, {&kProgram}, {}},  // program, TUI task
    {113, {&kHourglass}, {}},      {114, {&kFunction}, {}}, {115, {&kFunctionBlock}, {}},
    {116, {&kVariable}, {}},                                                      // variables, POU
    {125, {&kChip}, {}},                                                          // resource, executable
    {126, {&kFolder}, {}},                                                        // project
    {127, {&kClock}, {}},                                                         // task, task container
    {128, {&kRack}, {}},           {133, {&kDisk}, {}},     {149, {&kCube}, {}},  // base node, configuration
    {150, {&kGear}, {}},           {152, {&kCheck}, {}},    {153, {&kCross}, {}},
    {156, {&kPlusBox, 3, 3}, {}},   // the expand item
    {157, {&kMinusBox, 3, 3}, {}},  // the expanded item
    {158, {&kLeaf, 4, 4}, {}},      // the leaf item
};

COLORREF PixelOf(const Placement& placement, int x, int y) {
    return placement.drawing ? placement.drawing->At(x - placement.x, y - placement.y) : kVemNoColor;
}

class LibraryResources final : public CVemResourceModule {
public:
    bool FindPicture(VemResourceKind kind, unsigned id, CSize* size) const override {
        if (!Find(kind, id)) return false;
        const int side = kind == VemResourceKind::Icon ? kIconSize : kBitmapSize;
        *size = CSize(side, side);
        return true;
    }

    COLORREF GetPixel(VemResourceKind kind, unsigned id, int x, int y) const override {
        const Picture* picture = Find(kind, id);
        const int side = kind == VemResourceKind::Icon ? kIconSize : kBitmapSize;
        if (!picture || x < 0 || y < 0 || x >= side || y >= side) return kVemNoColor;
        COLORREF color = PixelOf(picture->overlay, x, y);
        if (color == kVemNoColor) color = PixelOf(picture->base, x, y);
        if (color == kVemNoColor && kind == VemResourceKind::Bitmap) color = 0xFFFFFF;  // the ground
        return color;
    }

private:
    static const Picture* Find(VemResourceKind kind, unsigned id) {
        if (kind == VemResourceKind::Icon) return FindIn(kIcons, id);
        return FindIn(kBitmaps, id);
    }
    template <std::size_t N>
    static const Picture* FindIn(const Picture (&pictures)[N], unsigned id) {
        for (const Picture& picture : pictures) {
            if (picture.id == id) return &picture;
        }
        return nullptr;
    }
};

// The library's module enters the chain of resource modules when the library is loaded.
[[maybe_unused]] const bool g_registered = (VemAddResourceModule(&vem::LibraryModule()), true);

}  // namespace

CVemResourceModule& vem::LibraryModule() {
    static LibraryResources module;
    return module;
}
