// dSelect: dMath under a second name, with its controls and heading.
#include "data/data_math.h"
#include "framework/registration.h"

class KEffectDataSelect : public KEffectDataMath {};

ZV_TOOL(KEffectDataSelect, ZV_DataSelect);
