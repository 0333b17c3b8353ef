#include "framework/message.h"
#include "raster/image.h"

KMessageValue::~KMessageValue() { delete image; }

KMessage::KMessage(int32_t k, uint32_t t, float x, float y) : kind(k), target(t)
{
    value.pointX = x;
    value.pointY = y;
}

KMessage::KMessage(int32_t k, uint32_t t, float v) : kind(k), target(t)
{
    value.floatValue = v;
    value.intValue = static_cast<int32_t>(v + 0.5f);
}

KMessage::KMessage(int32_t k, uint32_t t, std::string text) : kind(k), target(t)
{
    value.text = std::move(text);
}
