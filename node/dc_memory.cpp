// The device contexts without a surface: the state they share, and the one that records.
#include "vem_dc.h"

CVemMemoryDC::CVemMemoryDC(int charWidth, int lineHeight) : m_charWidth(charWidth), m_lineHeight(lineHeight) {}

CPoint CVemMemoryDC::MoveTo(CPoint p) {
    const CPoint previous = m_position;
    m_position = p;
    return previous;
}

bool CVemMemoryDC::LineTo(CPoint p) {
    m_position = p;
    return true;
}

int CVemMemoryDC::SetBkMode(int mode) {
    const int previous = m_bkMode;
    m_bkMode = mode;
    return previous;
}

COLORREF CVemMemoryDC::GetBkColor() const { return m_bkColor; }

COLORREF CVemMemoryDC::SetBkColor(COLORREF color) {
    const COLORREF previous = m_bkColor;
    m_bkColor = color;
    return previous;
}

CSize CVemMemoryDC::GetTextExtent(const CString& text) const {
    return CSize(text.GetLength() * m_charWidth, m_lineHeight);
}

// ---- recording -------------------------------------------------------------------------------------

std::string CVemDCCall::ToString() const {
    std::string out = Op + "(";
    for (std::size_t i = 0; i < Args.size(); ++i) {
        if (i) out += ",";
        out += std::to_string(Args[i]);
    }
    if (Op == "TextOut" || Op == "GetTextExtent") {
        if (!Args.empty()) out += ",";
        out += "\"" + Text + "\"";
    }
    return out + ")";
}

void CVemRecordingDC::Record(const char* op, std::vector<i64> args, std::string text) const {
    m_calls.push_back(CVemDCCall{op, std::move(args), std::move(text)});
}

std::vector<std::string> CVemRecordingDC::CallTexts() const {
    std::vector<std::string> texts;
    texts.reserve(m_calls.size());
    for (const CVemDCCall& call : m_calls) texts.push_back(call.ToString());
    return texts;
}

CPoint CVemRecordingDC::MoveTo(CPoint p) {
    Record("MoveTo", {p.x, p.y});
    return CVemMemoryDC::MoveTo(p);
}

bool CVemRecordingDC::LineTo(CPoint p) {
    Record("LineTo", {p.x, p.y});
    return CVemMemoryDC::LineTo(p);
}

bool CVemRecordingDC::DrawIcon(CPoint p, unsigned iconId) {
    Record("DrawIcon", {p.x, p.y, iconId});
    return true;
}

bool CVemRecordingDC::Rectangle(const CRect& r) {
    Record("Rectangle", {r.left, r.top, r.right, r.bottom});
    return true;
}

int CVemRecordingDC::SetBkMode(int mode) {
    Record("SetBkMode", {mode});
    return CVemMemoryDC::SetBkMode(mode);
}

COLORREF CVemRecordingDC::GetBkColor() const {
    Record("GetBkColor", {});
    return CVemMemoryDC::GetBkColor();
}

COLORREF CVemRecordingDC::SetBkColor(COLORREF color) {
    Record("SetBkColor", {color});
    return CVemMemoryDC::SetBkColor(color);
}

bool CVemRecordingDC::TextOut(i32 x, i32 y, const CString& text) {
    Record("TextOut", {x, y}, text.str());
    return true;
}

CSize CVemRecordingDC::GetTextExtent(const CString& text) const {
    Record("GetTextExtent", {}, text.str());
    return CVemMemoryDC::GetTextExtent(text);
}
