// rSphere: the ball of radius 1 about the origin, softened by Softness X.
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DSphere : public KEffectRegion3DSolid<kRegionSphere> {};

ZV_TOOL(KEffectRegion3DSphere, ZV_Region3DSphere);
