// The SVG device context: a resource's tree painted into a file that is well-formed XML and
// shows the text of every shown node.
#include <algorithm>
#include <map>
#include <regex>

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

const char kName[] = "[A-Za-z_:][-A-Za-z0-9_.:]*";

// A small well-formedness check: one root element, balanced tags, quoted attributes that are not
// repeated, no '<' in text or values, only defined or numeric references, control characters only
// where XML allows them. Collects the decoded contents of the <text> elements.
struct XmlCheck {
    std::string error;
    std::vector<std::string> texts;
    std::map<std::string, int> elements;

    explicit XmlCheck(const std::string& doc) {
        if (!ValidUtf8(doc)) error = "not UTF-8";
        if (error.empty()) Run(doc);
    }

private:
    // Character data with its references decoded; false with the error set when it is not XML.
    bool Decode(const std::string& data, std::string* out) {
        static const std::map<std::string, char> known = {
            {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
        static const std::regex numeric("#[0-9]+");
        for (std::size_t i = 0; i < data.size(); ++i) {
            const auto c = static_cast<unsigned char>(data[i]);
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return Fail("control character");
            if (c != '&') {
                out->push_back(data[i]);
                continue;
            }
            const std::size_t semi = data.find(';', i);
            if (semi == std::string::npos) return Fail("open reference");
            const std::string ref = data.substr(i + 1, semi - i - 1);
            if (known.count(ref)) {
                out->push_back(known.at(ref));
            } else if (!std::regex_match(ref, numeric)) {
                return Fail("bad reference &" + ref + ";");
            }
            i = semi;
        }
        return true;
    }
    bool Fail(const std::string& what) {
        if (error.empty()) error = what;
        return false;
    }
    void Run(const std::string& s) {
        const std::string name = kName, value = "(?:\"([^\"<]*)\"|'([^'<]*)')";
        static const std::regex tag("<(/?)(" + name + ")((?:\\s+" + name +
                                    "\\s*=\\s*(?:\"[^\"<]*\"|'[^'<]*'))*)\\s*(/?)>");
        static const std::regex attribute("(" + name + ")\\s*=\\s*" + value);
        std::size_t i = s.compare(0, 5, "<?xml") == 0 ? s.find("?>") + 2 : 0;
        std::vector<std::string> open;
        int roots = 0;
        for (std::smatch m; i < s.size(); i += m.length()) {
            const std::size_t lt = std::min(s.find('<', i), s.size());
            std::string data;
            if (!Decode(s.substr(i, lt - i), &data)) return;
            if (open.empty() && data.find_first_not_of(" \t\r\n") != std::string::npos)
                return void(Fail("text outside"));
            if (!open.empty() && open.back() == "text") texts.back() += data;
            if ((i = lt) == s.size()) break;
            if (!std::regex_search(s.begin() + static_cast<long>(i), s.end(), m, tag,
                                   std::regex_constants::match_continuous))
                return void(Fail("malformed tag at " + std::to_string(i)));
            if (m[1].length()) {
                if (open.empty() || open.back() != m[2] || m[4].length()) return void(Fail("unbalanced " + m.str()));
                open.pop_back();
                continue;
            }
            if (open.empty() && ++roots > 1) return void(Fail("second root"));
            ++elements[m[2]];
            std::vector<std::string> seen;
            const std::string attributes = m[3];
            for (std::sregex_iterator a(attributes.begin(), attributes.end(), attribute), end; a != end; ++a) {
                if (std::find(seen.begin(), seen.end(), (*a)[1]) != seen.end())
                    return void(Fail("repeated " + a->str()));
                seen.push_back((*a)[1]);
                std::string decoded;
                if (!Decode((*a)[2].matched ? (*a)[2] : (*a)[3], &decoded)) return;
            }
            if (m[2] == "text" && !m[4].length()) texts.emplace_back();
            if (!m[4].length()) open.push_back(m[2]);
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
