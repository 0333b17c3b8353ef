// The motion tracker of the vector tools: finds small blocks with strong edges,
// keeps those far enough apart, finds each in the frame before and after by
// block matching, and gives a motion anywhere by inverse-distance weighting.
#pragma once
#include <cstdint>
#include <vector>

class KImage;

struct KTrackCandidate {
    int32_t x = 0, y = 0;  // top left of the 5 x 5 block
    int32_t sum = 0;       // edge sum over the block
};

struct KTrackedPoint {
    int32_t x = 0, y = 0;              // top left of the block
    int32_t motionX = 0, motionY = 0;  // the motion chosen, in pixels
    int32_t previousX = 0, previousY = 0, nextX = 0, nextY = 0;  // displacements found
    int32_t previousScore = 0, nextScore = 0;
};

class KMotionTracker {
public:
    static constexpr int32_t kBlock = 5;

    // The image must outlive the tracker.
    explicit KMotionTracker(const KImage& image);

    void FindCandidates();
    void SelectCandidates();
    // Either frame may be null (or of another size): it is not searched.
    void Track(const KImage* previous, const KImage* next);
    // The motion at a pixel, in pixels of this image.
    void MotionAt(int32_t x, int32_t y, float& mx, float& my) const;

    int32_t width = 0, height = 0;
    float edgeThreshold = 0.1f;
    float borderFraction = 0.0f;
    float separationFraction = 0.02f;
    float pictureAspect = 1.0f, pixelAspect = 1.0f;
    float percentage = 1.0f;
    float radiusPower = 1.5f;
    float searchX = 0.05f, searchY = 0.05f;
    float matchLevel = 0.5f;
    std::vector<KTrackCandidate> candidates;
    std::vector<KTrackedPoint> points;

private:
    // Red, green and blue as 16-bit codes, three per pixel.
    static std::vector<uint16_t> Codes(const KImage& image);
    // The best place of the block at (x, y) in `frame`, and its score.
    void Search(const std::vector<uint16_t>& frame, int32_t x, int32_t y, int32_t& dx, int32_t& dy,
                int32_t& score) const;
    float Weight(int32_t d2) const;
    void PrepareWeights();
    std::vector<float> weights;  // by squared distance
    const KImage* image;  // outlives the tracker
    std::vector<uint16_t> codes;
    int32_t searchRadiusX = 0, searchRadiusY = 0;
};
