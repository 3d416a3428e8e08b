// Random trees of nodes of every class, with random fields, segment tables, files in the data
// container and chains of statements of every kind. The same seed gives the same tree on every host.
#pragma once

#include <random>
#include <string>

#include "vem32_classes.h"

namespace vemtest {

class Random {
public:
    explicit Random(unsigned seed) : rng_(seed) {}
    int Int(int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng_); }
    u16 Word() { return static_cast<u16>(Int(0, 0xFFFF)); }
    bool Coin() { return Int(0, 1) == 1; }
    // Names and texts, now and then long enough for the longer string prefixes.
    CString Text() {
        const int length = Int(0, 9) == 0 ? Int(250, 300) : Int(0, 12);
        std::string text;
        for (int i = 0; i < length; ++i) text += static_cast<char>(Int(0x20, 0x7E));
        return CString(text);
    }

private:
    std::mt19937 rng_;
};

// A tree of at most five levels below a node of a random class; files that an executable node
// carries are written into `dir` first.
CVemBaseNode* RandomTree(Random& r, const std::string& dir, int depth = 0);

}  // namespace vemtest
