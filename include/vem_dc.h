// Device contexts that the library brings along for hosts without a window system of their own.
// They are extensions: the flat functions only need the abstract CDC, which the host gives.
// - CVemRecordingDC keeps every call with its arguments, for tests and for hosts that paint the
//   calls themselves.
// - CVemSvgDC paints into an SVG document with the library's icons, and writes it to a file.
// Both measure a text with fixed character cells: a width per byte and one line height.
#pragma once

#include <string>
#include <vector>

#include "platform/cstring.h"
#include "platform/gdi.h"
#include "vem32_types.h"

// The state that painting changes and reads back: the current position, the background mode and
// colour, and the fixed text metrics. A new context stands at (0, 0), opaque, on white.
class VEM_API CVemMemoryDC : public CDC {
public:
    static constexpr int kDefaultCharWidth = 7;
    static constexpr int kDefaultLineHeight = 16;

    explicit CVemMemoryDC(int charWidth = kDefaultCharWidth, int lineHeight = kDefaultLineHeight);

    CPoint MoveTo(CPoint p) override;  // gives the previous position
    bool LineTo(CPoint p) override;
    int SetBkMode(int mode) override;  // gives the previous mode
    COLORREF GetBkColor() const override;
    COLORREF SetBkColor(COLORREF color) override;  // gives the previous colour
    // The width of every byte times the character width, and the line height.
    CSize GetTextExtent(const CString& text) const override;

    CPoint GetCurrentPosition() const { return m_position; }
    int GetBkMode() const { return m_bkMode; }
    int GetCharWidth() const { return m_charWidth; }
    int GetLineHeight() const { return m_lineHeight; }

private:
    CPoint m_position;
    int m_bkMode = OPAQUE;
    COLORREF m_bkColor = 0x00FFFFFF;
    int m_charWidth;
    int m_lineHeight;
};

// One call on a recording context: the operation, its numbers in the order of its arguments (a
// point as x, y; a rectangle as left, top, right, bottom), and its text where it has one.
struct VEM_API CVemDCCall {
    std::string Op;
    std::vector<i64> Args;
    std::string Text;

    // "MoveTo(0,5)", "TextOut(26,0,\"Project\")", "GetBkColor()".
    std::string ToString() const;
    friend bool operator==(const CVemDCCall&, const CVemDCCall&) = default;
};

// Records every call, the reading ones (GetBkColor, GetTextExtent) included.
class VEM_API CVemRecordingDC : public CVemMemoryDC {
public:
    using CVemMemoryDC::CVemMemoryDC;

    CPoint MoveTo(CPoint p) override;
    bool LineTo(CPoint p) override;
    bool DrawIcon(CPoint p, unsigned iconId) override;
    bool Rectangle(const CRect& r) override;
    int SetBkMode(int mode) override;
    COLORREF GetBkColor() const override;
    COLORREF SetBkColor(COLORREF color) override;
    bool TextOut(i32 x, i32 y, const CString& text) override;
    CSize GetTextExtent(const CString& text) const override;

    const std::vector<CVemDCCall>& Calls() const { return m_calls; }
    // Calls() as ToString texts, one per call.
    std::vector<std::string> CallTexts() const;
    void Clear() { m_calls.clear(); }

private:
    void Record(const char* op, std::vector<i64> args, std::string text = std::string()) const;

    mutable std::vector<CVemDCCall> m_calls;
};

// Paints into an SVG document: lines in grey, the library's icons (each defined once and used
// where it is drawn), rectangles with a black frame on white, and texts in black, on a box of the
// background colour while the background mode is opaque. Texts are 8-bit; bytes from 0x80 are
// taken as Latin-1.
class VEM_API CVemSvgDC : public CVemMemoryDC {
public:
    static constexpr int kDefaultMargin = 8;

    using CVemMemoryDC::CVemMemoryDC;

    CPoint MoveTo(CPoint p) override;
    bool LineTo(CPoint p) override;
    bool DrawIcon(CPoint p, unsigned iconId) override;  // false for a number without icon
    bool Rectangle(const CRect& r) override;
    bool TextOut(i32 x, i32 y, const CString& text) override;

    // The document, from (0, 0) to bottomRight plus the margin; for a tree, bottomRight is the
    // root's VemGetBottomOfTree after VemDraw.
    std::string GetDocument(CPoint bottomRight, int margin = kDefaultMargin) const;
    // Writes GetDocument to a temporary file beside the target and renames it over the target.
    // 1 if written, 0 if not; the target is then unchanged.
    int WriteFile(const CString& fileName, CPoint bottomRight, int margin = kDefaultMargin) const;

private:
    void EndPath();

    std::string m_body;
    std::string m_path;             // lines since the last element that was no line
    std::vector<unsigned> m_icons;  // icons used, each once
};
