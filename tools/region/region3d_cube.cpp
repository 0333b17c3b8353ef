// rCube: the cube of half size 1 about the origin, each pair of faces
// softened by the softness of its axis.
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DCube : public KEffectRegion3DSolid<kRegionCube> {};

ZV_TOOL(KEffectRegion3DCube, ZV_Region3DCube);
