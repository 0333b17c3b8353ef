// The shape value: a ShapeListVector of KShapeList, each a list of KShape
// with eight styles and a placement; a KShape is a chain of nodes holding one
// or more sub-paths, straight or curved. Coordinates are the image's
// normalised space (x across the width, y up to 1 / aspect), around the origin.
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>
#include "framework/geometry.h"
#include "framework/list.h"
#include "framework/message.h"

class KImage;

// How a node is reached from the one before it.
enum NodeType : int32_t {
    kNodeMove = 0,   // begins a sub-path
    kNodeLine = 1,   // straight segment to here
    kNodeConic = 2,  // control point of a quadratic; the next node ends the curve
    kNodeCubic = 3,  // one of three: two control points and the end
};

struct KShapeNode {
    float x = 0.0f, y = 0.0f;
    int32_t type = kNodeMove;
    bool closed = false;     // last node of a closed sub-path
    int32_t attribute = 0;   // raster role: 0 counts, 1 subtracts, 2 always paints
    Vector2f Point() const { return {x, y}; }
};

class KShape : public KListItem {
public:
    // Empty; with a source, its header (tag, flags, colours) is copied.
    explicit KShape(const KShape* source = nullptr);
    static KShape* Duplicate(const KShape& shape);

    void MoveTo(Vector2f p, bool closed = false);
    void LineTo(Vector2f p, bool closed = false);
    // A quadratic from the last node through `control` to `end`.
    void ConicTo(Vector2f control, Vector2f end, bool closed = false);
    void AddCubic(Vector2f c1, Vector2f c2, Vector2f end, bool closed = false);
    void AddNode(const KShapeNode& node);  // keeps the counts
    void Close();
    // Copies the nodes of `other`, or with `steal` takes them and empties it.
    void Append(KShape* other, bool steal);
    void CopyHeader(const KShape& source);

    int32_t NodeCount() const { return nodeCount; }
    const KShapeNode* FirstNode() const { return nodes.empty() ? nullptr : nodes.data(); }
    const std::vector<KShapeNode>& Nodes() const { return nodes; }
    std::vector<KShapeNode>& Nodes() { return nodes; }
    bool IsCurved() const { return conicCount + cubicCount != 0; }

    // Sum of the straight segments only: curves count nothing until flattened.
    float Length() const;
    bool IsClosed() const;
    void ApplyMatrix(const Matrix3f& m);
    void ApplyMatrix(const Matrix4f& m);
    // Even/odd per sub-path; true if any holds the point.
    bool Contains(Vector2f p) const;
    // A copy; mode 1 closes, 2 opens, 3 swaps each sub-path's last node.
    KShape* SetOpenClose(int32_t mode) const;
    // Smallest box around the nodes; false when empty.
    bool Bounds(Vector2f& low, Vector2f& high) const;

    int32_t nodeCount = 0, conicCount = 0, cubicCount = 0;
    int32_t tag = 0;
    bool hasFill = false, hasPen = false;
    KColor fillColor{0, 0, 0, 0}, penColor{0, 0, 0, 0};

private:
    std::vector<KShapeNode> nodes;
};

// One sub-path after splitting: distinct consecutive points.
class KShapeArray : public KListItem {
public:
    void Add(Vector2f p)
    {
        points.push_back(p);
        normalsValid = false;
    }
    int32_t Count() const { return static_cast<int32_t>(points.size()); }
    // Neighbours: a closed array wraps, an open one mirrors its end points.
    Vector2f After(int32_t i) const;
    Vector2f Before(int32_t i) const;
    // Unit normals before and after each point (two per point).
    void ComputeNormals(float blend, float angleLimit);

    std::vector<Vector2f> points;
    std::vector<Vector2f> normals;
    bool closed = false;
    bool normalsValid = false;
};

class KShapeArrayList : public KList {
public:
    explicit KShapeArrayList(const KShape& shape);
    KShapeArray* First() const { return static_cast<KShapeArray*>(head); }
};
inline KShapeArray* NextArray(const KShapeArray* a) { return static_cast<KShapeArray*>(a->next); }

// Writes an array into a shape as Move, Line ... and Close when closed.
void AppendArray(KShape& shape, const KShapeArray& array);
float ArrayLength(const KShapeArray& array);

struct KShapeDash {
    int32_t precision = 16;  // flatten steps
    int32_t type = 0;        // 0 none, 1 on/off, 2 on at 1/100, 3 a table of `count`
    int32_t count = 1;
    float scale = 1.0f;      // times the pen thickness
    float on[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    float off[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
};

struct KShapePaint {
    int32_t enabled = 1;
    int32_t mode = 0;  // 0 solid colour, 1 texture
    double blurX = 0.0, blurY = 0.0;
    double blurBlend = 0.0;
    double blurGain = 1.0;
    bool blurAllChannels = false;
    int32_t blurFilter = 4;
    float opacity = 1.0f;
    uint16_t color16[4] = {65535, 65535, 65535, 65535};
    KColor color{1, 1, 1, 1};
    double textureValues[3] = {0.0, 1.0, 1.0};
    KImage* texture = nullptr;  // not owned
    int32_t textureFilter = 1;
    int32_t textureEdges = 1;
    Matrix4f textureMatrix;
    int32_t applyMode = 5;

    // The 16-bit copy of `color`: each component times 65535, truncated.
    void DeriveColor16();
};

struct KShapeFill {
    int32_t rule = 0;  // 0 non-zero, 1 even/odd
    KColor color{1, 1, 1, 1};
};

struct KShapePen {
    int32_t rule = 0;
    KColor color{0, 0, 0, 0};
    int32_t style = 1;           // not 0: the built-in stroker; 0: polyclipping
    float thickness = 0.1f;
    float thicknessBias = 0.0f;  // -1 inward .. 1 outward
    float spare = 0.25f;
    float miterLimit = 4.0f;     // times the pen width
    int32_t joinType = 0;        // 0 miter, 1 bevel, 2 round
    int32_t joinPrecision = 8;   // arc steps per half turn
    int32_t endType = 1;         // 0 simple, 1 round
    float endRoundness = 1.0f;   // below 0.5 a round end is square
    int32_t attribute = 2;       // written to every stroke node when not 0
    KShapeDash dash;
};

// The look of a list: fill paint, pen paint, fill, pen.
struct KShapeStyle {
    KShapePaint paints[2];
    KShapeFill fill;
    KShapePen pen;
};

class KShapeList : public KList {
public:
    KShapeList() = default;
    // Styles and transform of `source`, no shapes.
    static std::unique_ptr<KShapeList> Like(const KShapeList& source);
    // Styles, transform and a duplicate of every shape.
    std::unique_ptr<KShapeList> Clone() const;

    KShape* First() const { return static_cast<KShape*>(head); }
    void Add(KShape* shape)
    {
        if (shape) Append(shape);
    }
    // Moves the nodes by `m` and keeps in `transform` the way back.
    void ApplyMatrix(const Matrix4f& m);

    KShapeStyle styles[8];
    Matrix4f transform;
};
inline KShape* NextShape(const KShape* s) { return static_cast<KShape*>(s->next); }

// What travels through a shape input or output: owning pointers to lists.
class ShapeListVector {
public:
    void Push(KShapeList* list)  // takes it; a null list is dropped
    {
        if (list) lists.emplace_back(list);
    }
    void Push(std::unique_ptr<KShapeList> list)
    {
        if (list) lists.push_back(std::move(list));
    }
    int32_t Count() const { return static_cast<int32_t>(lists.size()); }
    KShapeList* At(int32_t i) const { return lists[i].get(); }
    std::unique_ptr<ShapeListVector> Clone() const;
    int32_t ShapeCount() const;
    int32_t NodeCount() const;

    std::vector<std::unique_ptr<KShapeList>> lists;
    // The picture the shapes were drawn for, when known (an SVG file's size); 0 for none.
    int32_t frameWidth = 0, frameHeight = 0;
};

// A shape operation over every shape of every list: a new vector whose lists
// keep the sources' styles and transform. A null result adds nothing.
using KShapeOperation = std::function<KShape*(const KShape&)>;
std::unique_ptr<ShapeListVector> KMapShapes(const ShapeListVector* source, const KShapeOperation& op);
