// The device context that paints into an SVG document.
#include <algorithm>
#include <map>

#include "node/resources.h"
#include "platform/file.h"
#include "vem_dc.h"

namespace {

constexpr const char* kLineColor = "#808080";

std::string Number(i64 value) { return std::to_string(value); }

// Appends the pieces one after the other. Building texts this way, rather than with a literal in
// front of a temporary string, spares the copies of prepending.
template <typename... Pieces>
void Append(std::string& out, const Pieces&... pieces) {
    (out.append(pieces), ...);
}

// The middle of a pixel, so that lines of one pixel fall on whole pixels.
std::string PixelMiddle(i64 value) {
    const i64 twice = 2 * value + 1;
    std::string out = twice < 0 ? "-" : "";
    Append(out, std::to_string((twice < 0 ? -twice : twice) / 2), ".5");
    return out;
}

// 0x00BBGGRR as #rrggbb.
std::string Color(COLORREF color) {
    static const char digits[] = "0123456789abcdef";
    std::string out = "#";
    for (int shift : {0, 8, 16}) {
        const unsigned byte = (color >> shift) & 0xFF;
        out += digits[byte >> 4];
        out += digits[byte & 0xF];
    }
    return out;
}

// Text content of an element: markup characters as references, bytes from 0x80 as Latin-1 in
// UTF-8, and control bytes that XML does not allow as the replacement character.
std::string EscapeText(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char ch : text) {
        const auto byte = static_cast<unsigned char>(ch);
        switch (byte) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default:
                if (byte >= 0x80) {
                    out += static_cast<char>(0xC0 | (byte >> 6));
                    out += static_cast<char>(0x80 | (byte & 0x3F));
                } else if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
                    out += "\xEF\xBF\xBD";
                } else {
                    out += ch;
                }
        }
    }
    return out;
}

// One icon of the library as paths, one for each colour, made of runs of pixels along the rows.
std::string IconDefinition(unsigned iconId) {
    const CVemResourceModule& module = vem::LibraryModule();
    CSize size;
    module.FindPicture(VemResourceKind::Icon, iconId, &size);
    std::map<COLORREF, std::string> paths;
    for (int y = 0; y < size.cy; ++y) {
        for (int x = 0; x < size.cx;) {
            const COLORREF color = module.GetPixel(VemResourceKind::Icon, iconId, x, y);
            int end = x + 1;
            while (end < size.cx && module.GetPixel(VemResourceKind::Icon, iconId, end, y) == color) ++end;
            if (color != kVemNoColor) {
                Append(paths[color], "M", Number(x), " ", Number(y), "h", Number(end - x), "v1h-", Number(end - x),
                       "z");
            }
            x = end;
        }
    }
    std::string out = "<g id=\"i";
    Append(out, Number(iconId), "\">");
    for (const auto& [color, d] : paths) Append(out, "<path fill=\"", Color(color), "\" d=\"", d, "\"/>");
    out += "</g>\n";
    return out;
}

void AppendLinePath(std::string& out, const std::string& d) {
    Append(out, "<path fill=\"none\" stroke=\"", kLineColor, "\" d=\"", d, "\"/>\n");
}

}  // namespace

void CVemSvgDC::EndPath() {
    if (m_path.empty()) return;
    AppendLinePath(m_body, m_path);
    m_path.clear();
}

CPoint CVemSvgDC::MoveTo(CPoint p) {
    if (!m_path.empty()) Append(m_path, "M", PixelMiddle(p.x), " ", PixelMiddle(p.y));
    return CVemMemoryDC::MoveTo(p);
}

bool CVemSvgDC::LineTo(CPoint p) {
    if (m_path.empty()) {
        const CPoint from = GetCurrentPosition();
        Append(m_path, "M", PixelMiddle(from.x), " ", PixelMiddle(from.y));
    }
    Append(m_path, "L", PixelMiddle(p.x), " ", PixelMiddle(p.y));
    return CVemMemoryDC::LineTo(p);
}

bool CVemSvgDC::DrawIcon(CPoint p, unsigned iconId) {
    CSize size;
    if (!vem::LibraryModule().FindPicture(VemResourceKind::Icon, iconId, &size)) return false;
    EndPath();
    if (std::find(m_icons.begin(), m_icons.end(), iconId) == m_icons.end()) m_icons.push_back(iconId);
    Append(m_body, "<use xlink:href=\"#i", Number(iconId), "\" x=\"", Number(p.x), "\" y=\"", Number(p.y), "\"/>\n");
    return true;
}

// The frame covers the left and top edges but not the right and bottom ones.
bool CVemSvgDC::Rectangle(const CRect& r) {
    EndPath();
    const i64 width = std::max<i64>(i64{r.right} - r.left - 1, 0);
    const i64 height = std::max<i64>(i64{r.bottom} - r.top - 1, 0);
    Append(m_body, "<rect x=\"", PixelMiddle(r.left), "\" y=\"", PixelMiddle(r.top), "\" width=\"", Number(width),
           "\" height=\"", Number(height), "\" fill=\"#ffffff\" stroke=\"#000000\"/>\n");
    return true;
}

// The text's top left corner is at (x, y); its baseline lies three quarters of a line below.
bool CVemSvgDC::TextOut(i32 x, i32 y, const CString& text) {
    EndPath();
    const CSize extent = GetTextExtent(text);
    if (GetBkMode() == OPAQUE) {
        Append(m_body, "<rect x=\"", Number(x), "\" y=\"", Number(y), "\" width=\"", Number(extent.cx), "\" height=\"",
               Number(extent.cy), "\" fill=\"", Color(GetBkColor()), "\"/>\n");
    }
    Append(m_body, "<text x=\"", Number(x), "\" y=\"", Number(i64{y} + GetLineHeight() * 3 / 4), "\"");
    if (extent.cx > 0) Append(m_body, " textLength=\"", Number(extent.cx), "\" lengthAdjust=\"spacingAndGlyphs\"");
    Append(m_body, " xml:space=\"preserve\">", EscapeText(text.str()), "</text>\n");
    return true;
}

std::string CVemSvgDC::GetDocument(CPoint bottomRight, int margin) const {
    const std::string width = Number(std::max<i64>(i64{bottomRight.x} + margin, 0));
    const std::string height = Number(std::max<i64>(i64{bottomRight.y} + margin, 0));
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    Append(out, "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"",
           width, "\" height=\"", height, "\" viewBox=\"0 0 ", width, " ", height,
           "\" font-family=\"monospace\" font-size=\"", Number(GetLineHeight() * 3 / 4), "\">\n");
    out += "<defs>\n";
    for (unsigned icon : m_icons) out += IconDefinition(icon);
    out += "</defs>\n";
    Append(out, "<rect width=\"", width, "\" height=\"", height, "\" fill=\"#ffffff\"/>\n");
    out += m_body;
    if (!m_path.empty()) AppendLinePath(out, m_path);
    out += "</svg>\n";
    return out;
}

int CVemSvgDC::WriteFile(const CString& fileName, CPoint bottomRight, int margin) const {
    const std::string document = GetDocument(bottomRight, margin);
    CVemReplaceFile file;
    if (!file.OpenReplace(fileName)) return 0;
    try {
        file.Write(document.data(), static_cast<unsigned>(document.size()));
        file.Commit();
        return 1;
    } catch (const CFileException&) {
        return 0;
    }
}
