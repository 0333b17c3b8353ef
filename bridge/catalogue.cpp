// The tool catalogue: every tool the plug-in registers, with the names and
// menu category the registry shows. Kept as plain data so that the registry,
// `zelvarine tools` and a host-free test driver all read one list.
#include "bridge/catalogue.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::string_view kTop = "Zelvarine";
constexpr std::string_view kImage = "Zelvarine\\Image";
constexpr std::string_view kImageColor = "Zelvarine\\Image Color";
constexpr std::string_view kImageCreate = "Zelvarine\\Image Create";
constexpr std::string_view kImagePixel = "Zelvarine\\Image Pixel";
constexpr std::string_view kImagePosition = "Zelvarine\\Image Position";
constexpr std::string_view kImageVector = "Zelvarine\\Image Vector";
constexpr std::string_view kImageWarp = "Zelvarine\\Image Warp";
constexpr std::string_view kShape = "Zelvarine\\Shape";
constexpr std::string_view kShapeCreate = "Zelvarine\\Shape Create";
constexpr std::string_view kData = "Zelvarine\\Data";
constexpr std::string_view kDataCreate = "Zelvarine\\Data Create";
constexpr std::string_view k3D = "Zelvarine\\3D";
constexpr std::string_view k3DCreate = "Zelvarine\\3D Create";
constexpr std::string_view k3DRegion = "Zelvarine\\3D Region";
constexpr std::string_view kSamples = "Samples";

// Catalogue order: by category, then as each menu lists its tools. Help texts
// stand as the tools show them, misspellings and trailing blanks included.
constexpr KCatalogueEntry kEntries[] = {
    {"Beat", "ZV_NumberBeat", "Beat", kTop, "Pulse your animation in sync with the beat of your music"},
    {"Color Switcher", "ZV_NumberColorSwitchboard", "CSw", kTop, "Color Switcher"},
    {"Random", "ZV_NumberRandom", "Rnd", kTop, "Random Number"},
    {"Formula", "ZV_TextFormula", "Frm", kTop, ""},
    {"From file", "ZV_TextFromFile", "FrFl", kTop, ""},
    {"Juggle", "ZV_TextJuggle", "Jgl", kTop, ""},
    {"Write", "ZV_TextWrite", "Wri", kTop, ""},

    {"Analyzer", "ZV_Analyzer", "Anl", kImage, ""},
    {"Blur in Space", "ZV_BlurSpace", "BSp", kImage, ""},
    {"Bounding Box", "ZV_BoundingBox", "BBox", kImage, ""},
    {"Color Map", "ZV_ColorMap", "CMap", kImage, ""},
    {"Connect", "ZV_Connect", "Con", kImage, ""},
    {"Dither", "ZV_Dither", "Dtr", kImage, ""},
    {"Extend", "ZV_Extend", "Extd", kImage, ""},
    {"Find", "ZV_Find", "Fnd", kImage, ""},
    {"Flur", "ZV_Flur", "Flr", kImage, ""},
    {"Fragments", "ZV_Fragments", "Frg", kImage, ""},
    {"Grow", "ZV_Grow", "Grw", kImage, ""},
    {"Grow Color", "ZV_GrowColor", "GrwC", kImage, "Fill transparent parts by extending the edge color"},
    {"Microwaves", "ZV_Microwaves", "Mic", kImage, "Microwaves"},
    {"Pack", "ZV_Pack", "Pck", kImage, ""},
    {"Painterly", "ZV_Painterly", "Pty", kImage, ""},
    {"Rasterize", "ZV_Rasterize", "Ras", kImage, ""},
    {"Smart Field Strobe", "ZV_SmartFieldStrobe", "SFS", kImage, "Smart Field Strobe tries to detect motion and only removes fields where there is."},
    {"Spiral", "ZV_Spiral", "Spi", kImage, ""},
    {"Spread", "ZV_Spread", "Spr", kImage, ""},
    {"Switcher", "ZV_Switcher", "Swi", kImage, ""},
    {"Time Mapper", "ZV_TimeMapper", "TMap", kImage, ""},
    {"UV", "ZV_UV", "UV", kImage, ""},
    {"Worm", "ZV_Worm", "Wrm", kImage, ""},

    {"Color", "ZV_Color", "Col", kImageColor, ""},
    {"Hue/Saturation", "ZV_HueSaturation", "HSL", kImageColor, ""},
    {"Invert", "ZV_Invert", "Inv", kImageColor, ""},
    {"Match Color", "ZV_MatchColor", "MaC", kImageColor, ""},
    {"Recolor", "ZV_Recolor", "ReCo", kImageColor, ""},
    {"Replace Color", "ZV_ReplaceColor", "Rpl", kImageColor, ""},
    {"Threshold", "ZV_Threshold", "Thr", kImageColor, ""},

    {"Blobs", "ZV_Blobs", "Blb", kImageCreate, ""},
    {"Generate", "ZV_Generate", "Gen", kImageCreate, "Generate noise patterns and such"},
    {"Lines", "ZV_Lines", "Lin", kImageCreate, ""},
    {"Pattern", "ZV_Pattern", "Pat", kImageCreate, ""},
    {"Relight", "ZV_Relight", "ReL", kImageCreate, ""},
    {"Shapes", "ZV_Shapes", "Shp", kImageCreate, ""},

    {"Average", "ZV_Average", "Avr", kImagePixel, ""},
    {"Beams", "ZV_Beams", "Bms", kImagePixel, ""},
    {"Bevel", "ZV_Bevel", "Bvl", kImagePixel, ""},
    {"Border", "ZV_Border", "Brd", kImagePixel, ""},
    {"Channel Shifter", "ZV_ChannelShifter", "ChS", kImagePixel, ""},
    {"Clean Edges", "ZV_CleanEdges", "ClE", kImagePixel, "Clean Edges"},
    {"Combine", "ZV_Combine", "Com", kImagePixel, ""},
    {"Crop Monsieur", "ZV_CropMonsieur", "CrM", kImagePixel, ""},
    {"Cut and Bleed", "ZV_CutAndBleed", "CnB", kImagePixel, ""},
    {"Deflicker", "ZV_Deflicker", "Dfl", kImagePixel, ""},
    {"Duplicate", "ZV_Duplicate", "Dup", kImagePixel, ""},
    {"Eat", "ZV_Eat", "Eat", kImagePixel, "Eats out the edges of an image"},
    {"Extrude", "ZV_Extrude", "Extr", kImagePixel, ""},
    {"Line and Fill", "ZV_LineAndFill", "LnF", kImagePixel, ""},
    {"Map Filter", "ZV_MapFilter", "Map", kImagePixel, ""},
    {"Matte Cleaner", "ZV_MatteCleaner", "MCl", kImagePixel, ""},
    {"Merge and Bone", "ZV_MergeAndBone", "M&B", kImagePixel, ""},
    {"Noise", "ZV_Noise", "Nse", kImagePixel, ""},
    {"Pixel Region", "ZV_PixelRegion", "PiR", kImagePixel, ""},
    {"Planes", "ZV_Planes", "Pln", kImagePixel, ""},
    {"Plastic", "ZV_Plastic", "Pla", kImagePixel, ""},
    {"Positioner", "ZV_Positioner", "Pos", kImagePixel, ""},
    {"Projection", "ZV_Project", "Pjt", kImagePixel, ""},
    {"Push", "ZV_Push", "Psh", kImagePixel, ""},
    {"Reassemble", "ZV_Reassemble", "Rea", kImagePixel, ""},
    {"Rest", "ZV_Rest", "Rst", kImagePixel, ""},
    {"Seamless", "ZV_Seamless", "Seam", kImagePixel, ""},
    {"Seamless Loop", "ZV_SeamlessLoop", "SLL", kImagePixel, "Create seamlessly looping sequences easily"},
    {"Smear", "ZV_Smear", "Sme", kImagePixel, ""},
    {"Sort", "ZV_Sort", "Srt", kImagePixel, ""},

    {"Contour", "ZV_Contour", "Ctr", kImagePosition, ""},
    {"Gradient", "ZV_Gradient", "Gra", kImagePosition, ""},
    {"Shade By Sample", "ZV_ShadeBySample", "Samp", kImagePosition, ""},

    {"Vector Blur", "ZV_VectorBlur", "VBl", kImageVector, "Vector Blur"},
    {"Vector Field", "ZV_VectorField", "VFi", kImageVector, "Vector Field"},
    {"Vector Motion", "ZV_VectorMotion", "VMo", kImageVector, "Vector Motion"},
    {"Vector Time", "ZV_VectorTime", "VTi", kImageVector, "Vector Time"},
    {"Vector Visualization", "ZV_VectorVisualization", "VViz", kImageVector, "Vector Visualization"},

    {"Bend", "ZV_Bend", "Bnd", kImageWarp, ""},
    {"Directional Scale", "ZV_DirectionalScale", "DSc", kImageWarp, ""},
    {"Kaleidoscope", "ZV_Kaleidoscope", "Kal", kImageWarp, ""},
    {"Lens Distortion", "ZV_LensDistortion", "Lns", kImageWarp, ""},
    {"Mirror", "ZV_Mirror", "Mir", kImageWarp, ""},
    {"Offset", "ZV_Offset", "Off", kImageWarp, ""},
    {"Radial", "ZV_Radial", "Radi", kImageWarp, ""},
    {"Relative Transform", "ZV_RelativeTransform", "RXf", kImageWarp, ""},
    {"Remap", "ZV_Remap", "RMp", kImageWarp, ""},
    {"Segment Transform", "ZV_SegmentTransform", "SXf", kImageWarp, ""},
    {"Shear", "ZV_Shear", "Shr", kImageWarp, ""},
    {"Shuffle", "ZV_Shuffle", "Shf", kImageWarp, ""},
    {"Spherize", "ZV_Spherize", "Sph", kImageWarp, ""},
    {"Stretch", "ZV_Stretch", "Str", kImageWarp, ""},
    {"Transform", "ZV_Transform", "KXf", kImageWarp, ""},
    {"Morph", "ZV_Morph", "Mor", kImageWarp, ""},

    {"sBoolean", "ZV_ShapeBoolean", "sBol", kShape, ""},
    {"sKill", "ZV_ShapeKill", "sKil", kShape, ""},
    {"sMerge", "ZV_ShapeMerge", "sMrg", kShape, ""},
    {"sOffset", "ZV_ShapeOffset", "sOff", kShape, ""},
    {"sRender", "ZV_ShapeRender", "sRen", kShape, ""},
    {"sResample", "ZV_ShapeResample", "sRes", kShape, ""},
    {"sShading", "ZV_ShapeShading", "sSha", kShape, ""},
    {"sSmooth", "ZV_ShapeSmooth", "sSmo", kShape, ""},
    {"sTools", "ZV_ShapeTools", "sTls", kShape, ""},
    {"sTransform", "ZV_ShapeTransform", "sXf", kShape, ""},
    {"sTriangulate", "ZV_ShapeTriangulate", "sTri", kShape, ""},
    {"sWriteOn", "ZV_ShapeWriteOn", "sWri", kShape, ""},
    {"sZigZag", "ZV_ShapeZigZag", "sZZ", kShape, ""},

    {"sChart Create", "ZV_ShapeChartCreate", "sChaC", kShapeCreate, ""},
    {"sPrimitive Create", "ZV_ShapePrimitiveCreate", "sPriC", kShapeCreate, ""},
    {"sSpiral Create", "ZV_ShapeSpiral", "sSpiC", kShapeCreate, ""},
    {"sTrace Create", "ZV_ShapeTraceCreate", "sTraC", kShapeCreate, ""},

    {"dCopy", "ZV_DataCopy", "dCop", kData, ""},
    {"dDelete", "ZV_DataDelete", "dDel", kData, ""},
    {"dGrow", "ZV_DataGrow", "dGro", kData, ""},
    {"dInfo", "ZV_DataInfo", "dInf", kData, ""},
    {"dMath", "ZV_DataMath", "dMat", kData, ""},
    {"dMerge", "ZV_DataMerge", "dMrg", kData, ""},
    {"dRemap", "ZV_DataRemap", "dRMp", kData, ""},
    {"dSelect", "ZV_DataSelect", "dSel", kData, ""},
    {"dSet Constant", "ZV_DataSetConstant", "dSCon", kData, ""},
    {"dSet Manual", "ZV_DataSetManual", "dSMan", kData, ""},
    {"dSet Ramp", "ZV_DataSetRamp", "dSRam", kData, ""},
    {"dSet Random", "ZV_DataSetRandom", "dSRa", kData, ""},
    {"dSort", "ZV_DataSort", "dSor", kData, ""},
    {"dTool", "ZV_DataTool", "dTl", kData, ""},
    {"dTransform", "ZV_DataTransform", "dXf", kData, ""},

    {"dChannels Create", "ZV_DataChannelsCreate", "dChC", kDataCreate, ""},
    {"dFrom Image Create", "ZV_DataFromImageCreate", "dImaC", kDataCreate, ""},
    {"dFrom Image Analyzer Create", "ZV_DataFromImageHistogramCreate", "dIAnC", kDataCreate, ""},
    {"dFrom Image Pack Create", "ZV_DataFromImagePackCreate", "dIPaC", kDataCreate, ""},
    {"dFrom Region Create", "ZV_DataFromRegion3DCreate", "dFReC", kDataCreate, ""},
    {"dLoader Create", "ZV_DataLoaderCreate", "dLoa", kDataCreate, ""},
    {"dPattern Create", "ZV_DataPatternCreate", "dPatC", kDataCreate, ""},

    {"Cut 3D", "KEffectCut3D", "3Cut", k3D, "Cuts off an object"},
    {"Align 3D", "ZV_Align3D", "3Aln", k3D, "Align an object relative to "},
    {"Connect 3D", "ZV_Connect3D", "3Con", k3D, "Connect vertices..."},
    {"Data Duplicate 3D", "ZV_DataDuplicate3D", "3DDup", k3D, "Create dulpicates, fully controlled by data channels."},
    {"Kill 3D", "ZV_Kill3D", "3Kil", k3D, "Kills (part of) an object"},
    {"Mapped Duplicate 3D", "ZV_MappedDuplicate3D", "3MDup", k3D, "Create dulpicates, fully controlled by image maps."},
    {"Objectify 3D", "ZV_Objectify3D", "3Obj", k3D, "Manibulates objects as a whole"},
    {"Poly Play 3D", "ZV_PolyPlay3D", "3PP", k3D, "Manipulate objects on a poly level."},
    {"Retime 3D", "ZV_Retime3D", "3Ret", k3D, "A 3D retiming tool"},
    {"Tool 3D", "ZV_Tool3D", "3Tool", k3D, "Tools to manipulate an object"},
    {"Vertex Play 3D", "ZV_VertexPlay3D", "3VP", k3D, "Manipulate objects on a vertex level."},

    {"Data Create 3D", "KOperatorDataCreate3D", "3HFlC", k3DCreate, "Creates a height field from a map"},
    {"Fold Create 3D", "KOperatorFoldCreate3D", "3FldC", k3DCreate, "Creates a foldable object"},
    {"Heightfield Create 3D", "KOperatorHeightfieldCreate3D", "3HFlC", k3DCreate, "Creates a height field from a map"},
    {"Object Create 3D", "KEffectObjectCreate3D", "3ObjC", k3DCreate, "Creates an object"},
    {"Shape Create 3D", "KOperatorShapeCreate3D", "3ShC", k3DCreate, "Creates a 3D object from a shape"},
    {"Tube Create 3D", "KOperatorTubeCreate3D", "3Tub", k3DCreate, "Creates some tubes"},
    {"World Position Create 3D", "KOperatorWorldSpaceCreate3D", "3WsC", k3DCreate, "Creates a plane with based on world space coordinates"},

    {"rCube", "ZV_Region3DCube", "rCub", k3DRegion, ""},
    {"rImage", "ZV_Region3DImage", "rIma", k3DRegion, ""},
    {"rMerge", "ZV_Region3DMerge", "rMrg", k3DRegion, ""},
    {"rModify", "ZV_Region3DModify", "rMod", k3DRegion, ""},
    {"rNoise", "ZV_Region3DNoise", "rNoi", k3DRegion, ""},
    {"rPlane", "ZV_Region3DPlane", "rPla", k3DRegion, ""},
    {"rShape", "ZV_Region3DShape", "rSha", k3DRegion, ""},
    {"rSphere", "ZV_Region3DSphere", "rSph", k3DRegion, ""},
    {"rTransform", "ZV_Region3DTransform", "rXf", k3DRegion, ""},

    {"Sample Brightness", "Sample_Brightness", "S_1", kSamples, ""},
};

} // namespace

const std::vector<KCatalogueEntry>& KCatalogue()
{
    // Function-local so that registrations may read it from their own static initialisers.
    static const std::vector<KCatalogueEntry> entries(std::begin(kEntries), std::end(kEntries));
    return entries;
}

const KCatalogueEntry* KCatalogueFind(std::string_view className)
{
    const std::vector<KCatalogueEntry>& entries = KCatalogue();
    auto it = std::find_if(entries.begin(), entries.end(),
                           [className](const KCatalogueEntry& e) { return e.className == className; });
    return it == entries.end() ? nullptr : &*it;
}
