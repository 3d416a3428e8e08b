// Points, rectangles, bitmaps and the device context that the tree view paints into. The host
// gives the device context; the library only calls the operations below.
#pragma once

#include "platform/cstring.h"
#include "platform/types.h"

struct CPoint {
    i32 x = 0;
    i32 y = 0;
    CPoint() = default;
    CPoint(i32 px, i32 py) : x(px), y(py) {}
    friend CPoint operator+(CPoint a, CPoint b) { return {a.x + b.x, a.y + b.y}; }
    friend CPoint operator-(CPoint a, CPoint b) { return {a.x - b.x, a.y - b.y}; }
    friend bool operator==(CPoint a, CPoint b) { return a.x == b.x && a.y == b.y; }
    friend bool operator!=(CPoint a, CPoint b) { return !(a == b); }
};

struct CSize {
    i32 cx = 0;
    i32 cy = 0;
    CSize() = default;
    CSize(i32 w, i32 h) : cx(w), cy(h) {}
};

struct CRect {
    i32 left = 0;
    i32 top = 0;
    i32 right = 0;
    i32 bottom = 0;
    CRect() = default;
    CRect(i32 l, i32 t, i32 r, i32 b) : left(l), top(t), right(r), bottom(b) {}
    // Inclusive on all four edges, as the tree view's hit test wants it.
    bool ContainsInclusive(CPoint p) const { return p.x >= left && p.x <= right && p.y >= top && p.y <= bottom; }
    i32 Width() const { return right - left; }
    i32 Height() const { return bottom - top; }
    friend bool operator==(const CRect& a, const CRect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
};

using COLORREF = u32;  // 0x00BBGGRR

enum : int { TRANSPARENT = 1, OPAQUE = 2 };

// A bitmap of the library, by resource number.
class VEM_API CBitmap {
public:
    // Attaches the numbered bitmap; false if the library has no bitmap of that number.
    bool LoadBitmap(unsigned resourceId);
    unsigned GetResourceId() const { return m_id; }
    bool IsAttached() const { return m_id != 0; }
    int Width() const;
    int Height() const;
    // Pixel in 0x00BBGGRR, for a host that draws the bitmap itself.
    COLORREF GetPixel(int x, int y) const;

private:
    unsigned m_id = 0;
};

class VEM_API CDC {
public:
    virtual ~CDC();
    virtual CPoint MoveTo(CPoint p) = 0;
    virtual bool LineTo(CPoint p) = 0;
    virtual bool DrawIcon(CPoint p, unsigned iconId) = 0;  // a 32 x 32 icon of the library
    virtual bool Rectangle(const CRect& r) = 0;
    virtual int SetBkMode(int mode) = 0;
    virtual COLORREF GetBkColor() const = 0;
    virtual COLORREF SetBkColor(COLORREF color) = 0;
    virtual bool TextOut(i32 x, i32 y, const CString& text) = 0;
    // Extent of a text, measured on the context's attribute handle.
    virtual CSize GetTextExtent(const CString& text) const = 0;
};
