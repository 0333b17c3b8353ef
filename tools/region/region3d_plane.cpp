// rPlane: the half of space on the positive side of z = 0, softened by
// Softness Z.
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DPlane : public KEffectRegion3DSolid<kRegionPlane> {};

ZV_TOOL(KEffectRegion3DPlane, ZV_Region3DPlane);
