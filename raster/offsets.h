// Offset lists: a small picture or a stroke turned into pixel offsets with
// weights, so a tool walks a kernel without touching the picture.
#pragma once
#include <cstdint>
#include <mutex>
#include <vector>

class KImage;

struct KOffsetsEntry {
    int32_t x = 0;
    int32_t y = 0;
    int32_t weight = 0;  // 0..65535
    bool negative = false;
};

struct KOffsetsList {
    KOffsetsList() = default;
    KOffsetsList(const KOffsetsList&) = delete;
    KOffsetsList& operator=(const KOffsetsList&) = delete;
    ~KOffsetsList() { delete[] entries; }
    float scale = 1.0f;
    int32_t count = 0;
    KOffsetsEntry* entries = nullptr;
};

enum KOffsetsMode : int32_t { kOffsetsPixels = 0, kOffsetsRows = 1, kOffsetsColumns = 2 };

// Folds an angle (radians) into 0..pi/2 and gives the unit steps of its quadrant.
float KAngleQuadrant(float angle, int32_t& stepX, int32_t& stepY);

class KOffsetsTable {
public:
    KOffsetsTable(int32_t angleCount, float aspect, bool rounded, bool straight);
    KOffsetsTable(const KOffsetsTable&) = delete;
    KOffsetsTable& operator=(const KOffsetsTable&) = delete;
    ~KOffsetsTable();

    // Mode 0: every non-zero pixel; 1 and 2: the horizontal or vertical
    // transitions, so a box-like filter can keep a running sum.
    static KOffsetsList* FromImage(const KImage* image, int32_t channel, bool mirror,
                                   int32_t mode);
    static KOffsetsList* BuildStraight(float angle, float length, float aspect, bool roundUp);
    // The straight stroke into a vector the caller keeps: a tool that builds
    // one per pixel reuses its storage.
    static void BuildStraightInto(std::vector<KOffsetsEntry>& out, float angle, float length, float aspect,
                                  bool roundUp);
    static KOffsetsList* BuildThick(float angle, float length, float aspect, bool roundUp);

    // The list of angle index i (angle i * 2pi / angleCount), built on first use.
    const KOffsetsList* Get(int32_t index, float length);

    int32_t angleCount = 0;
    float aspect = 1.0f;
    bool thick = false;
    bool useEdge = false;  // round stroke lengths up
    KOffsetsList** lists = nullptr;

private:
    std::mutex lock;
};
