// Points, rectangles, bitmaps and the device context that the tree view paints into. The host
// gives the device context; the library only calls the operations below.
#pragma once

#include <cstddef>

#include "platform/cstring.h"
#include "platform/types.h"
#include "vem32_types.h"

using COLORREF = u32;  // 0x00BBGGRR

enum : int { TRANSPARENT = 1, OPAQUE = 2 };

enum class VemResourceKind { Icon, Bitmap };

// A pixel where a picture is transparent, or a place outside the picture.
constexpr COLORREF kVemNoColor = 0xFFFFFFFFu;

// A module that holds pictures by number. A module enters the chain of resource modules when it
// is loaded; the library's own module does so for its icons and bitmaps.
class VEM_API CVemResourceModule {
public:
    virtual ~CVemResourceModule();
    // Size of the numbered picture; false if the module has no picture of that kind and number.
    virtual bool FindPicture(VemResourceKind kind, unsigned id, CSize* size) const = 0;
    // Pixel in 0x00BBGGRR, or kVemNoColor.
    virtual COLORREF GetPixel(VemResourceKind kind, unsigned id, int x, int y) const = 0;
};

// The chain of resource modules, searched in the order in which they entered it.
VEM_API void VemAddResourceModule(const CVemResourceModule* module);
VEM_API void VemRemoveResourceModule(const CVemResourceModule* module);
// The current source of resources, searched before the chain; null when only the chain counts.
VEM_API const CVemResourceModule* VemGetResourceModule();
// Sets the current source and gives the previous one back.
VEM_API const CVemResourceModule* VemSetResourceModule(const CVemResourceModule* module);
// The module that a load of the numbered picture takes it from: the current source if it holds the
// picture, otherwise the first module of the chain that does; null if none does.
VEM_API const CVemResourceModule* VemFindResourceModule(VemResourceKind kind, unsigned id);

// Makes a module the current source of resources while it lives, and sets the previous one back.
class CVemResourceScope {
public:
    explicit CVemResourceScope(const CVemResourceModule* module) : m_previous(VemSetResourceModule(module)) {}
    ~CVemResourceScope() { VemSetResourceModule(m_previous); }
    CVemResourceScope(const CVemResourceScope&) = delete;
    CVemResourceScope& operator=(const CVemResourceScope&) = delete;

private:
    const CVemResourceModule* m_previous;
};

// A bitmap of a resource module, by number.
class VEM_API CBitmap {
public:
    // Attaches the numbered bitmap of the module that VemFindResourceModule names. False if no
    // module has it; a bitmap attached before then stays attached.
    bool LoadBitmap(unsigned resourceId);
    unsigned GetResourceId() const { return m_id; }
    bool IsAttached() const { return m_module != nullptr; }
    int Width() const;
    int Height() const;
    // Pixel in 0x00BBGGRR, for a host that draws the bitmap itself; kVemNoColor outside it or
    // when nothing is attached.
    COLORREF GetPixel(int x, int y) const;

private:
    CSize Size() const;

    unsigned m_id = 0;
    const CVemResourceModule* m_module = nullptr;
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
