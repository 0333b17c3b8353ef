// Messages an effect hands back from OnChange: show/hide, relabel or set a control.
#pragma once
#include <cstdint>
#include <string>
#include "framework/list.h"

class KImage;

struct KColor {
    float r = 0.0f, g = 0.0f, b = 0.0f, a = 0.0f;
};

class KMessageValue {
public:
    KMessageValue() = default;
    KMessageValue(const KMessageValue&) = delete;
    KMessageValue& operator=(const KMessageValue&) = delete;
    ~KMessageValue();

    int32_t intValue = 0;  // for visibility, above 0 means visible
    float floatValue = 0.0f;
    float pointX = 0.0f, pointY = 0.0f;
    int32_t reserved[4] = {0, 0, 0, 0};
    KImage* image = nullptr;  // owned
    std::string text;
    KColor color;
};

enum KMessageKind : int32_t { kMessageVisible = 1, kMessageLabel = 2, kMessageValue = 3 };

class KMessage : public KListItem {
public:
    KMessage(int32_t kind, uint32_t target, float x, float y);
    KMessage(int32_t kind, uint32_t target, float v);
    KMessage(int32_t kind, uint32_t target, std::string text);

    int32_t kind;
    uint32_t target;
    KMessageValue value;
};

class KMessageList : public KList {
public:
    KMessage* First() const { return static_cast<KMessage*>(head); }
    // Makes the message in place: Add(kMessageVisible, "Cent"_id, 1.0f).
    template <class... Args> KMessage* Add(int32_t kind, uint32_t target, Args&&... args)
    {
        return static_cast<KMessage*>(Append(new KMessage(kind, target, std::forward<Args>(args)...)));
    }
};
