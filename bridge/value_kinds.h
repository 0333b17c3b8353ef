// The kinds of value that travel between tools, one entry each: the host value
// that carries it, how it is read into an effect's field and written out of
// one, and how the field is freed. A kind is added here and nowhere else; the
// host side (how `info` names it, how the command line writes it to a file) is
// the host value's own, registered with the host by the same entry.
#pragma once
#include <cstdint>
#include <string>
#include <vector>
#include "framework/effect.h"
#include "host/value.h"

struct KValueKind {
    int32_t valueKind = kValueNone;  // the framework's ValueKind
    host::DataType dataType = host::DataType::Number;
    std::string typeId;              // the custom parameter class, empty for the host's own
    // A fixed host output id ("Output" for tables, shapes, regions); empty: the label's.
    std::string outputId;
    // Reads a request's value into the bound field; a null value gives the
    // kind's empty value. The field then holds the effect's own copy or a
    // wrapper that does not own the host's data. Null for kinds that only leave tools.
    void (*read)(const host::Parameter* value, void* field) = nullptr;
    // The field's value handed over as a new host value the receiver owns; null
    // for kinds that only enter tools.
    host::Value (*write)(const void* field) = nullptr;
    // Frees what `read` left in the field after a render.
    void (*release)(void* field) = nullptr;

    // For the plug-in's own classes (a `typeId`): the name `info` shows, and the
    // files the command line writes a value to.
    std::string name;
    std::vector<std::string> extensions;
    void (*writeFile)(const host::Parameter& value, const std::string& path, const std::string& extension,
                      const host::WriteOptions& options) = nullptr;
    std::vector<std::string> options;  // the options writeFile reads
    // Reads a file of one of the extensions into a value (a shape from .svg),
    // for a Loader or a command line; throws host::BadInput. Null: no files read.
    host::Value (*readFile)(const std::string& path) = nullptr;
    std::vector<std::string> readExtensions{};  // those readFile takes, when fewer; empty: all
    // A value written out as JSON in a flow or on a command line, with files
    // taken from `folder`, and the blend between two keys; null where the
    // kind has none. Both throw host::BadInput.
    host::Value (*parse)(const std::string& json, const std::string& folder) = nullptr;
    host::Value (*interpolate)(const host::Parameter& a, const host::Parameter& b, double f) = nullptr;
};

// The field of a kind that the tool owns, a T*: freed, or given a new value
// with the old one freed. Kinds use these as their `release` and in `read`.
template <class T> void KReleaseField(void* field)
{
    auto** value = static_cast<T**>(field);
    delete *value;
    *value = nullptr;
}
template <class T> void KSetField(void* field, T* value)
{
    KReleaseField<T>(field);
    *static_cast<T**>(field) = value;
}

// A wrapper, not owning, of the image a value carries; null for no image.
KImage* KWrapImage(const host::Parameter* value);

// The entry of a value kind, or null when no entry carries it.
const KValueKind* KFindValueKind(int32_t valueKind);

// Adds the entry of a kind (or replaces the one for the same ValueKind) and
// tells the host of its class.
bool KAddValueKind(KValueKind kind);

// A kind of the plug-in's own, registered beside its value type with
// ZV_VALUE_KIND(MakeKind), where `KValueKind MakeKind()` fills the entry.
// Kinds register before any tool, whatever the link order: each tool's
// registration checks that its kinds are carried.
struct KValueKindRegistration {
    explicit KValueKindRegistration(KValueKind (*make)()) { KAddValueKind(make()); }
};
#define ZV_VALUE_KIND(make) \
    __attribute__((init_priority(1000))) const KValueKindRegistration make##Registered(make)

// Whether a declared input of this kind is a number, point or text that the
// request's conversion rules read, rather than a carried value.
bool KIsConvertedKind(int32_t valueKind);

// Why an effect cannot be registered: an input or output of a kind that no
// entry carries. Empty when every declaration has its entry.
std::string KValueKindProblem(KEffect& effect);
