// The SVG device context: a resource's tree painted into a file that is well-formed XML and
// shows the text of every shown node.
#include <cctype>
#include <map>

#include "treeview_test_util.h"

using vemtest::Add;
using vemtest::ShownNode;

namespace {

bool ValidUtf8(const std::string& s) {
    for (std::size_t i = 0; i < s.size();) {
        const auto lead = static_cast<unsigned char>(s[i]);
        const std::size_t length = lead < 0x80         ? 1
                                   : (lead >> 5) == 6  ? 2
                                   : (lead >> 4) == 14 ? 3
                                   : (lead >> 3) == 30 ? 4
                                                       : 0;
        if (length == 0 || i + length > s.size()) return false;
        for (std::size_t k = 1; k < length; ++k) {
            if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return false;
        }
        i += length;
    }
    return true;
}

bool IsNameChar(char ch, bool first) {
    const auto c = static_cast<unsigned char>(ch);
    if (std::isalpha(c) || ch == '_' || ch == ':') return true;
    return !first && (std::isdigit(c) || ch == '-' || ch == '.');
}

// A small well-formedness check: one root element, balanced tags, quoted attributes that are not
// repeated, no '<' in text or values, only defined or numeric references, control characters only
// where XML allows them. Collects the decoded contents of the <text> elements.
struct XmlCheck {
    std::string error;
    std::vector<std::string> texts;
    std::map<std::string, int> elements;

    explicit XmlCheck(const std::string& doc) : s(doc) {
        if (!ValidUtf8(s)) error = "not UTF-8";
        if (error.empty()) Run();
    }

private:
    const std::string& s;
    std::size_t i = 0;

    bool Fail(const std::string& what) {
        if (error.empty()) error = what + " at " + std::to_string(i);
        return false;
    }
    std::string Name() {
        const std::size_t start = i;
        while (i < s.size() && IsNameChar(s[i], i == start)) ++i;
        return s.substr(start, i - start);
    }
    void SkipSpace() {
        while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    }
    // Character data up to the next '<' or the quote; references decoded.
    bool CharData(char end, std::string* out) {
        for (; i < s.size() && s[i] != end && s[i] != '<'; ++i) {
            const auto c = static_cast<unsigned char>(s[i]);
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return Fail("control character");
            if (s[i] != '&') {
                out->push_back(s[i]);
                continue;
            }
            const std::size_t semi = s.find(';', i);
            if (semi == std::string::npos) return Fail("open reference");
            const std::string ref = s.substr(i + 1, semi - i - 1);
            static const std::map<std::string, char> known = {
                {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
            if (known.count(ref)) {
                out->push_back(known.at(ref));
            } else if (ref.size() < 2 || ref[0] != '#' || ref.find_first_not_of("0123456789", 1) != std::string::npos) {
                return Fail("bad reference &" + ref + ";");
            }
            i = semi;
        }
        return true;
    }
    bool Attributes(bool* empty) {
        std::vector<std::string> seen;
        for (;;) {
            SkipSpace();
            if (s.compare(i, 2, "/>") == 0) {
                i += 2;
                *empty = true;
                return true;
            }
            if (i < s.size() && s[i] == '>') {
                ++i;
                *empty = false;
                return true;
            }
            const std::string name = Name();
            if (name.empty()) return Fail("attribute name");
            if (std::find(seen.begin(), seen.end(), name) != seen.end()) return Fail("repeated " + name);
            seen.push_back(name);
            SkipSpace();
            if (i >= s.size() || s[i++] != '=') return Fail("no =");
            SkipSpace();
            if (i >= s.size() || (s[i] != '"' && s[i] != '\'')) return Fail("unquoted value");
            const char quote = s[i++];
            std::string value;
            if (!CharData(quote, &value)) return false;
            if (i >= s.size() || s[i++] != quote) return Fail("'<' in a value");
        }
    }
    void Run() {
        if (s.compare(0, 5, "<?xml") == 0) i = s.find("?>") + 2;
        std::vector<std::string> open;
        int roots = 0;
        std::string text;
        while (i < s.size()) {
            if (s[i] != '<') {
                std::string data;
                if (!CharData('<', &data)) return;
                if (open.empty() && data.find_first_not_of(" \t\r\n") != std::string::npos) {
                    Fail("text outside the root");
                    return;
                }
                if (!open.empty() && open.back() == "text") text += data;
                continue;
            }
            ++i;
            if (i < s.size() && s[i] == '/') {
                ++i;
                const std::string name = Name();
                SkipSpace();
                if (open.empty() || open.back() != name || i >= s.size() || s[i++] != '>') {
                    Fail("unbalanced </" + name + ">");
                    return;
                }
                if (name == "text") texts.push_back(text);
                open.pop_back();
                continue;
            }
            const std::string name = Name();
            if (name.empty()) {
                Fail("element name");
                return;
            }
            if (open.empty() && ++roots > 1) {
                Fail("second root");
                return;
            }
            ++elements[name];
            bool empty = false;
            if (!Attributes(&empty)) return;
            if (!empty) open.push_back(name);
            if (name == "text") text.clear();
        }
        if (!open.empty()) Fail("unclosed <" + open.back() + ">");
        if (roots != 1) Fail("no root");
    }
};

std::string Latin1ToUtf8(const std::string& text) {
    std::string out;
    for (char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (c < 0x80) {
            out += ch;
        } else {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::size_t Count(const std::string& haystack, const std::string& needle) {
    std::size_t count = 0;
    for (std::size_t at = haystack.find(needle); at != std::string::npos; at = haystack.find(needle, at + 1)) ++count;
    return count;
}

// A compiled resource as the tree view shows it, with the icons of its classes: the executable,
// the task container with two tasks, their units and variables, and the global part. Names hold
// markup characters and bytes of Latin-1. One unit is collapsed.
struct ResourceTree : ::testing::Test {
    ShownNode exe{kVemExeNode, "Res1 <Steuerung & Co>", 121, 125};
    ShownNode* tasks = Add(&exe, new ShownNode(kVemTaskContainerNode, "TASKS", 122, 127));
    ShownNode* fast = Add(tasks, new ShownNode(kVemTuiTaskNode, "Fast", 122, 112));
    ShownNode* prog = Add(fast, new ShownNode(kVemProgramNode, "Main : PROG", 137, 112));
    ShownNode* counter = Add(prog, new ShownNode(kVemVariableNode, "Z\xE4hler", 125, 116, 0));
    ShownNode* values = Add(prog, new ShownNode(kVemArrayNode, "Werte[0..9]", 129, 116, 0));
    ShownNode* motor = Add(prog, new ShownNode(kVemFbInstanceNode, "Motor1 : FB_Motor", 125, 116, 0));
    ShownNode* speed = Add(motor, new ShownNode(kVemVariableNode, "Speed", 125, 116, 0));
    ShownNode* slow = Add(tasks, new ShownNode(kVemTuiTaskNode, "Slow", 122, 112));
    ShownNode* fb = Add(slow, new ShownNode(kVemFbNode, "FB_Motor", 115, 115));
    ShownNode* fn = Add(slow, new ShownNode(kVemFunctionNode, "Scale", 124, 114));
    ShownNode* global = Add(&exe, new ShownNode(kVemBaseNode, "Global - Resource", 117, 149));
    ShownNode* rec = Add(global, new ShownNode(kVemStructNode, "Rec \"a\" 'b'", 130, 116));
    ShownNode* field = Add(rec, new ShownNode(kVemVariableNode, "x\x01y", 125, 116, 0));

    std::vector<CVemBaseNode*> Shown() {
        return {&exe, tasks, fast, prog, counter, values, motor, slow, fb, fn, global, rec, field};
    }
};

}  // namespace

TEST_F(ResourceTree, SvgFileIsWellFormedAndShowsEveryShownText) {
    vemtest::TempDir dir;
    const std::string path = dir.file("tree.svg");
    CVemSvgDC svg;
    VemDraw(&exe, &svg, CPoint(4, 4), CPoint(4, 4), counter);
    const CPoint bottom = VemGetBottomOfTree(&exe);
    ASSERT_EQ(svg.WriteFile(path.c_str(), bottom), 1);
    const std::string doc = vemtest::ReadFileText(path);
    EXPECT_EQ(doc, svg.GetDocument(bottom));
    EXPECT_FALSE(vemtest::FileExists(path + ".tmp"));

    XmlCheck xml(doc);
    ASSERT_EQ(xml.error, "");
    EXPECT_EQ(xml.elements["svg"], 1);

    std::vector<std::string> expected;
    for (CVemBaseNode* node : Shown()) expected.push_back(Latin1ToUtf8(VemGetNodeText(node).str()));
    expected.back() = "x\xEF\xBF\xBDy";  // the control byte, replaced
    EXPECT_EQ(xml.texts, expected);
    EXPECT_EQ(Count(doc, "Speed"), 0u);  // below the collapsed instance

    const std::string size =
        "width=\"" + std::to_string(bottom.x + 8) + "\" height=\"" + std::to_string(bottom.y + 8) + "\"";
    EXPECT_NE(doc.find(size), std::string::npos);
}

TEST(TreeViewSvg, TextsAreEscapedAndLatin1BecomesUtf8) {
    CVemSvgDC svg;
    svg.TextOut(0, 0, "a<b>&\"c\" \xFC\xDF\x80\x7F");
    const std::string doc = svg.GetDocument(CPoint(100, 20));
    EXPECT_NE(doc.find(">a&lt;b&gt;&amp;&quot;c&quot; \xC3\xBC\xC3\x9F\xC2\x80\x7F</text>"), std::string::npos);
    XmlCheck xml(doc);
    EXPECT_EQ(xml.error, "");
    ASSERT_EQ(xml.texts.size(), 1u);
    EXPECT_EQ(xml.texts[0], "a<b>&\"c\" \xC3\xBC\xC3\x9F\xC2\x80\x7F");
}

TEST(TreeViewSvg, OpaqueTextsStandOnTheirBackgroundColour) {
    CVemSvgDC svg;
    svg.SetBkColor(0x00336699);
    svg.SetBkMode(TRANSPARENT);
    svg.TextOut(10, 20, "see");
    EXPECT_EQ(Count(svg.GetDocument(CPoint(50, 50)), "#996633"), 0u);
    svg.SetBkMode(OPAQUE);
    svg.TextOut(10, 40, "see");
    const std::string doc = svg.GetDocument(CPoint(50, 50));
    EXPECT_NE(doc.find("<rect x=\"10\" y=\"40\" width=\"21\" height=\"16\" fill=\"#996633\"/>"), std::string::npos);
    EXPECT_NE(doc.find("<text x=\"10\" y=\"52\" textLength=\"21\""), std::string::npos);
}

TEST(TreeViewSvg, LinesJoinIntoPathsOnPixelMiddles) {
    CVemSvgDC svg;
    svg.MoveTo(CPoint(-4, 0));
    svg.LineTo(CPoint(-4, 5));
    svg.LineTo(CPoint(3, 5));
    svg.MoveTo(CPoint(0, 9));
    svg.LineTo(CPoint(2, 9));
    EXPECT_NE(svg.GetDocument(CPoint(10, 10)).find("d=\"M-3.5 0.5L-3.5 5.5L3.5 5.5M0.5 9.5L2.5 9.5\""),
              std::string::npos);
    EXPECT_FALSE(svg.DrawIcon(CPoint(0, 0), 999));
    EXPECT_TRUE(svg.DrawIcon(CPoint(0, 0), 117));
    EXPECT_EQ(XmlCheck(svg.GetDocument(CPoint(10, 10))).error, "");
}

TEST(TreeViewSvg, AFileThatCannotBeWrittenGivesZero) {
    vemtest::TempDir dir;
    CVemSvgDC svg;
    EXPECT_EQ(svg.WriteFile(dir.file("missing/tree.svg").c_str(), CPoint(10, 10)), 0);
    EXPECT_FALSE(vemtest::FileExists(dir.file("missing/tree.svg")));
}
