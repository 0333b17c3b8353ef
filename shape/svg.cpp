#include "shape/svg.h"
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <pugixml.hpp>

namespace {

constexpr double kPi = 3.14159265358979323846;

// An affine map of SVG user space: x' = a x + c y + e, y' = b x + d y + f.
struct Affine {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
    Affine Then(const Affine& o) const  // this first, then o
    {
        return {o.a * a + o.c * b, o.b * a + o.d * b, o.a * c + o.c * d, o.b * c + o.d * d,
                o.a * e + o.c * f + o.e, o.b * e + o.d * f + o.f};
    }
    void Map(double x, double y, double& ox, double& oy) const
    {
        ox = a * x + c * y + e;
        oy = b * x + d * y + f;
    }
    double Scale() const { return std::sqrt(std::fabs(a * d - b * c)); }
};

struct Paint {
    bool none = false;
    KColor color{0, 0, 0, 1};
};

// What an element inherits from its groups.
struct Style {
    Paint fill{false, {0, 0, 0, 1}};
    Paint stroke{true, {0, 0, 0, 1}};
    float fillOpacity = 1, strokeOpacity = 1, opacity = 1;
    bool evenOdd = false;
    double strokeWidth = 1;
    int32_t join = 0, cap = 0;  // pen join and end numbering
};

class Reader {
public:
    KSvgRead result;

    void Read(const std::string& text)
    {
        pugi::xml_document doc;
        const pugi::xml_parse_result parsed = doc.load_buffer(text.data(), text.size());
        if (!parsed)
            throw KSvgError(std::string("not valid XML at byte ") + std::to_string(parsed.offset) + ": " +
                            parsed.description());
        const pugi::xml_node root = doc.document_element();
        if (std::strcmp(LocalName(root), "svg") != 0)
            throw KSvgError(std::string("the document is <") + root.name() + ">, not <svg>");
        Frame(root);
        result.shapes = std::make_unique<ShapeListVector>();
        // Shape space from the viewBox: x = px / W - 0.5, y = (H / 2 - py) / W.
        toShape = {1.0 / width, 0, 0, -1.0 / width, -viewX / width - 0.5, (height * 0.5 + viewY) / width};
        Style style;
        Apply(root, style);
        loose = std::make_unique<KShapeList>();
        for (pugi::xml_node child : root.children()) {
            if (child.type() != pugi::node_element) continue;
            if (std::strcmp(LocalName(child), "g") == 0) {
                auto list = std::make_unique<KShapeList>();
                Element(child, style, Affine{}, *list);
                if (list->count) result.shapes->Push(std::move(list));
            } else {
                Element(child, style, Affine{}, *loose);
            }
        }
        if (loose->count) result.shapes->lists.insert(result.shapes->lists.begin(), std::move(loose));
        result.width = static_cast<int32_t>(std::lround(width));
        result.height = static_cast<int32_t>(std::lround(height));
    }

private:
    double width = 1920, height = 1080, viewX = 0, viewY = 0;
    Affine toShape;
    std::unique_ptr<KShapeList> loose;
    std::set<std::string> seen;
    std::set<const KShapeList*> penSet;

    static const char* LocalName(const pugi::xml_node& n)
    {
        const char* name = n.name();
        const char* colon = std::strrchr(name, ':');
        return colon ? colon + 1 : name;
    }

    void Unsupported(const std::string& what)
    {
        if (seen.insert(what).second) result.unsupported.push_back(what);
    }

    static bool Numbers(const char* s, std::vector<double>& out)
    {
        out.clear();
        while (*s) {
            while (*s == ' ' || *s == ',' || *s == '\t' || *s == '\n' || *s == '\r') ++s;
            if (!*s) break;
            char* end = nullptr;
            const double v = std::strtod(s, &end);
            if (end == s) return false;
            out.push_back(v);
            s = end;
        }
        return true;
    }

    // A length in user units: plain numbers and "px"; other units count as px.
    double Length(const pugi::xml_node& n, const char* name, double fallback)
    {
        const pugi::xml_attribute a = n.attribute(name);
        if (!a) return fallback;
        char* end = nullptr;
        const double v = std::strtod(a.value(), &end);
        if (end == a.value()) throw KSvgError(std::string("<") + n.name() + "> " + name + " \"" + a.value() + "\" is not a length");
        if (*end == '%') Unsupported("lengths in %");
        else if (*end && std::strcmp(end, "px") != 0) Unsupported(std::string("lengths in ") + end);
        return v;
    }

    void Frame(const pugi::xml_node& root)
    {
        std::vector<double> box;
        if (const pugi::xml_attribute vb = root.attribute("viewBox")) {
            if (!Numbers(vb.value(), box) || box.size() != 4 || !(box[2] > 0) || !(box[3] > 0))
                throw KSvgError(std::string("viewBox \"") + vb.value() + "\" is not four numbers with a size");
            viewX = box[0], viewY = box[1], width = box[2], height = box[3];
            return;
        }
        width = Length(root, "width", 1920);
        height = Length(root, "height", 1080);
        if (!(width > 0) || !(height > 0)) throw KSvgError("the picture has no size");
    }

    Affine Transform(const pugi::xml_node& n)
    {
        Affine m;
        const pugi::xml_attribute a = n.attribute("transform");
        if (!a) return m;
        const std::string text = a.value();
        size_t at = 0;
        while (true) {
            const size_t open = text.find('(', at);
            if (open == std::string::npos) break;
            const size_t close = text.find(')', open);
            if (close == std::string::npos) throw KSvgError("transform \"" + text + "\" is not closed");
            std::string name = text.substr(at, open - at);
            name.erase(std::remove_if(name.begin(), name.end(), [](char ch) { return ch == ' ' || ch == ',' || ch == '\n' || ch == '\t'; }), name.end());
            std::vector<double> v;
            if (!Numbers(text.substr(open + 1, close - open - 1).c_str(), v))
                throw KSvgError("transform \"" + text + "\" has a value that is not a number");
            Affine step;
            auto need = [&](size_t lo, size_t hi) {
                if (v.size() < lo || v.size() > hi) throw KSvgError("transform " + name + " takes " + std::to_string(lo) + " to " + std::to_string(hi) + " numbers");
            };
            if (name == "matrix") {
                need(6, 6);
                step = {v[0], v[1], v[2], v[3], v[4], v[5]};
            } else if (name == "translate") {
                need(1, 2);
                step.e = v[0];
                step.f = v.size() > 1 ? v[1] : 0;
            } else if (name == "scale") {
                need(1, 2);
                step.a = v[0];
                step.d = v.size() > 1 ? v[1] : v[0];
            } else if (name == "rotate") {
                need(1, 3);
                const double r = v[0] * kPi / 180, cs = std::cos(r), sn = std::sin(r);
                const double cx = v.size() == 3 ? v[1] : 0, cy = v.size() == 3 ? v[2] : 0;
                step = {cs, sn, -sn, cs, cx - cs * cx + sn * cy, cy - sn * cx - cs * cy};
            } else if (name == "skewX") {
                need(1, 1);
                step.c = std::tan(v[0] * kPi / 180);
            } else if (name == "skewY") {
                need(1, 1);
                step.b = std::tan(v[0] * kPi / 180);
            } else {
                throw KSvgError("unknown transform \"" + name + "\"");
            }
            // The rightmost step applies first: m = m * step.
            m = step.Then(m);
            at = close + 1;
        }
        return m;
    }

    static bool Hex(const std::string& s, KColor& c)
    {
        auto digit = [](char ch) {
            return ch >= '0' && ch <= '9' ? ch - '0' : ch >= 'a' && ch <= 'f' ? ch - 'a' + 10 : ch >= 'A' && ch <= 'F' ? ch - 'A' + 10 : -1;
        };
        for (char ch : s) if (digit(ch) < 0) return false;
        if (s.size() == 3) {
            c = {digit(s[0]) * 17 / 255.0f, digit(s[1]) * 17 / 255.0f, digit(s[2]) * 17 / 255.0f, 1};
            return true;
        }
        if (s.size() == 6) {
            c = {(digit(s[0]) * 16 + digit(s[1])) / 255.0f, (digit(s[2]) * 16 + digit(s[3])) / 255.0f,
                 (digit(s[4]) * 16 + digit(s[5])) / 255.0f, 1};
            return true;
        }
        return false;
    }

    Paint Colour(std::string s, const std::string& what)
    {
        s.erase(0, s.find_first_not_of(" \t"));
        s.erase(s.find_last_not_of(" \t") + 1);
        Paint p;
        static const std::map<std::string, KColor> named = {
            {"black", {0, 0, 0, 1}}, {"white", {1, 1, 1, 1}}, {"red", {1, 0, 0, 1}},
            {"green", {0, 128 / 255.0f, 0, 1}}, {"lime", {0, 1, 0, 1}}, {"blue", {0, 0, 1, 1}},
            {"yellow", {1, 1, 0, 1}}, {"cyan", {0, 1, 1, 1}}, {"aqua", {0, 1, 1, 1}},
            {"magenta", {1, 0, 1, 1}}, {"fuchsia", {1, 0, 1, 1}}, {"gray", {128 / 255.0f, 128 / 255.0f, 128 / 255.0f, 1}},
            {"grey", {128 / 255.0f, 128 / 255.0f, 128 / 255.0f, 1}}, {"silver", {192 / 255.0f, 192 / 255.0f, 192 / 255.0f, 1}},
            {"orange", {1, 165 / 255.0f, 0, 1}}, {"purple", {128 / 255.0f, 0, 128 / 255.0f, 1}},
            {"navy", {0, 0, 128 / 255.0f, 1}}, {"maroon", {128 / 255.0f, 0, 0, 1}}, {"olive", {128 / 255.0f, 128 / 255.0f, 0, 1}},
            {"teal", {0, 128 / 255.0f, 128 / 255.0f, 1}}};
        if (s == "none" || s == "transparent") {
            p.none = true;
            return p;
        }
        if (s.rfind("url(", 0) == 0) {
            Unsupported("gradients and patterns (" + what + " url(...)), drawn black");
            return p;
        }
        if (s == "currentColor" || s == "inherit") return p;
        if (!s.empty() && s[0] == '#' && Hex(s.substr(1), p.color)) return p;
        if (s.rfind("rgb(", 0) == 0 && s.back() == ')') {
            std::string inner = s.substr(4, s.size() - 5);
            const bool percent = inner.find('%') != std::string::npos;
            std::replace(inner.begin(), inner.end(), '%', ' ');
            std::vector<double> v;
            if (Numbers(inner.c_str(), v) && v.size() == 3) {
                const double k = percent ? 1.0 / 100 : 1.0 / 255;
                p.color = {float(std::clamp(v[0] * k, 0.0, 1.0)), float(std::clamp(v[1] * k, 0.0, 1.0)),
                           float(std::clamp(v[2] * k, 0.0, 1.0)), 1};
                return p;
            }
        }
        if (auto it = named.find(s); it != named.end()) {
            p.color = it->second;
            return p;
        }
        Unsupported("colour \"" + s + "\", drawn black");
        return p;
    }

    void Property(const std::string& key, const std::string& value, Style& s)
    {
        auto number = [&](double fallback) {
            char* end = nullptr;
            const double v = std::strtod(value.c_str(), &end);
            return end == value.c_str() ? fallback : v;
        };
        if (key == "fill") s.fill = Colour(value, key);
        else if (key == "stroke") s.stroke = Colour(value, key);
        else if (key == "fill-opacity") s.fillOpacity = float(std::clamp(number(1), 0.0, 1.0));
        else if (key == "stroke-opacity") s.strokeOpacity = float(std::clamp(number(1), 0.0, 1.0));
        else if (key == "opacity") s.opacity *= float(std::clamp(number(1), 0.0, 1.0));
        else if (key == "fill-rule") s.evenOdd = value == "evenodd";
        else if (key == "stroke-width") s.strokeWidth = number(1);
        else if (key == "stroke-linejoin") s.join = value == "bevel" ? 1 : value == "round" ? 2 : 0;
        else if (key == "stroke-linecap") s.cap = value == "round" ? 1 : 0;
        else if (key == "stroke-dasharray" && value != "none") Unsupported("stroke-dasharray");
        else if ((key == "clip-path" || key == "mask" || key == "filter" || key == "marker-start" ||
                  key == "marker-mid" || key == "marker-end") && value != "none")
            Unsupported(key);
    }

    void Apply(const pugi::xml_node& n, Style& s)
    {
        static const char* keys[] = {"fill", "stroke", "fill-opacity", "stroke-opacity", "opacity", "fill-rule",
                                     "stroke-width", "stroke-linejoin", "stroke-linecap", "stroke-dasharray",
                                     "clip-path", "mask", "filter", "marker-start", "marker-mid", "marker-end"};
        for (const char* k : keys)
            if (const pugi::xml_attribute a = n.attribute(k)) Property(k, a.value(), s);
        if (n.attribute("class") && !seen.count("<style>")) Unsupported("class (style sheets)");
        std::stringstream style(n.attribute("style").value());
        std::string item;
        while (std::getline(style, item, ';')) {
            const size_t colon = item.find(':');
            if (colon == std::string::npos) continue;
            std::string k = item.substr(0, colon), v = item.substr(colon + 1);
            k.erase(std::remove(k.begin(), k.end(), ' '), k.end());
            Property(k, v, s);
        }
    }

    void Element(const pugi::xml_node& n, const Style& inherited, const Affine& parent, KShapeList& list)
    {
        const std::string name = LocalName(n);
        if (name == "title" || name == "desc" || name == "metadata" || name == "defs" || name == "namedview") return;
        if (name == "style") {
            Unsupported("<style>");
            return;
        }
        Style style = inherited;
        Apply(n, style);
        const Affine m = Transform(n).Then(parent);
        if (name == "g" || name == "a" || name == "svg") {
            if (name == "svg") Unsupported("nested <svg>");
            for (pugi::xml_node child : n.children())
                if (child.type() == pugi::node_element) Element(child, style, m, list);
            return;
        }
        auto shape = std::make_unique<KShape>();
        Builder b{*shape, m.Then(toShape)};
        if (name == "path") Path(n, b);
        else if (name == "rect") Rect(n, b);
        else if (name == "circle") Ellipse(n, b, Length(n, "r", 0), Length(n, "r", 0));
        else if (name == "ellipse") Ellipse(n, b, Length(n, "rx", 0), Length(n, "ry", 0));
        else if (name == "line") Poly(n, b, false, true);
        else if (name == "polyline") Poly(n, b, false, false);
        else if (name == "polygon") Poly(n, b, true, false);
        else {
            Unsupported("<" + name + ">");
            return;
        }
        if (!shape->NodeCount()) return;
        const float fillAlpha = style.fillOpacity * style.opacity, penAlpha = style.strokeOpacity * style.opacity;
        auto premultiplied = [](const Paint& p, float alpha) {
            if (p.none) return KColor{0, 0, 0, 0};
            const float a = p.color.a * alpha;
            return KColor{p.color.r * a, p.color.g * a, p.color.b * a, a};
        };
        shape->hasFill = true;
        shape->fillColor = premultiplied(style.fill, fillAlpha);
        shape->hasPen = true;
        shape->penColor = premultiplied(style.stroke, penAlpha);
        // The list's look comes from its first shape, its pen from the first stroked one.
        KShapeStyle& look = list.styles[0];
        if (!list.count) look.fill.rule = style.evenOdd ? 1 : 0;
        if (!style.stroke.none && penSet.insert(&list).second) {
            look.pen.thickness = float(style.strokeWidth * m.Scale() / width * 100.0);
            look.pen.joinType = style.join;
            look.pen.endType = style.cap;
        }
        list.Add(shape.release());
    }

    // Writes SVG user-space points into a shape through one affine map.
    struct Builder {
        KShape& shape;
        Affine map;
        double cx = 0, cy = 0, sx = 0, sy = 0;  // current and sub-path start, user space
        bool open = false;
        Vector2f P(double x, double y) const
        {
            double ox, oy;
            map.Map(x, y, ox, oy);
            return {float(ox), float(oy)};
        }
        void Move(double x, double y)
        {
            shape.MoveTo(P(x, y));
            cx = sx = x, cy = sy = y;
            open = true;
        }
        void Line(double x, double y)
        {
            if (!open) Move(cx, cy);
            shape.LineTo(P(x, y));
            cx = x, cy = y;
        }
        void Cubic(double x1, double y1, double x2, double y2, double x, double y)
        {
            if (!open) Move(cx, cy);
            shape.AddCubic(P(x1, y1), P(x2, y2), P(x, y));
            cx = x, cy = y;
        }
        void Quad(double x1, double y1, double x, double y)
        {
            if (!open) Move(cx, cy);
            shape.ConicTo(P(x1, y1), P(x, y));
            cx = x, cy = y;
        }
        void Close()
        {
            if (!open) return;
            // The closing segment back to the start stays implicit, as in the model.
            shape.Close();
            cx = sx, cy = sy;
            open = false;
        }
        // An elliptical arc as cubics, one per quarter turn or less.
        void Arc(double rx, double ry, double rotation, bool large, bool sweep, double x, double y)
        {
            if (x == cx && y == cy) return;
            rx = std::fabs(rx), ry = std::fabs(ry);
            if (rx == 0 || ry == 0) return Line(x, y);
            const double phi = rotation * kPi / 180, cp = std::cos(phi), sp = std::sin(phi);
            const double dx = (cx - x) / 2, dy = (cy - y) / 2;
            const double x1 = cp * dx + sp * dy, y1 = -sp * dx + cp * dy;
            const double lambda = x1 * x1 / (rx * rx) + y1 * y1 / (ry * ry);
            if (lambda > 1) rx *= std::sqrt(lambda), ry *= std::sqrt(lambda);
            const double num = rx * rx * ry * ry - rx * rx * y1 * y1 - ry * ry * x1 * x1;
            const double den = rx * rx * y1 * y1 + ry * ry * x1 * x1;
            double k = den > 0 ? std::sqrt(std::max(num / den, 0.0)) : 0;
            if (large == sweep) k = -k;
            const double ccx = k * rx * y1 / ry, ccy = -k * ry * x1 / rx;
            const double ox = cp * ccx - sp * ccy + (cx + x) / 2, oy = sp * ccx + cp * ccy + (cy + y) / 2;
            auto angle = [](double ux, double uy, double vx, double vy) {
                return std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
            };
            const double t1 = angle(1, 0, (x1 - ccx) / rx, (y1 - ccy) / ry);
            double dt = angle((x1 - ccx) / rx, (y1 - ccy) / ry, (-x1 - ccx) / rx, (-y1 - ccy) / ry);
            if (!sweep && dt > 0) dt -= 2 * kPi;
            if (sweep && dt < 0) dt += 2 * kPi;
            const int pieces = std::max(1, int(std::ceil(std::fabs(dt) / (kPi / 2) - 1e-9)));
            const double step = dt / pieces, h = 4.0 / 3.0 * std::tan(step / 4);
            auto at = [&](double t, double& px, double& py, double& tx, double& ty) {
                const double ex = rx * std::cos(t), ey = ry * std::sin(t);
                px = cp * ex - sp * ey + ox, py = sp * ex + cp * ey + oy;
                const double dx2 = -rx * std::sin(t), dy2 = ry * std::cos(t);
                tx = cp * dx2 - sp * dy2, ty = sp * dx2 + cp * dy2;
            };
            for (int i = 0; i < pieces; ++i) {
                double ax, ay, atx, aty, bx, by, btx, bty;
                at(t1 + i * step, ax, ay, atx, aty);
                at(t1 + (i + 1) * step, bx, by, btx, bty);
                if (i == pieces - 1) bx = x, by = y;
                Cubic(ax + h * atx, ay + h * aty, bx - h * btx, by - h * bty, bx, by);
            }
        }
    };

    void Path(const pugi::xml_node& n, Builder& b)
    {
        const char* s = n.attribute("d").value();
        const char* begin = s;
        const std::string d = s;
        char command = 0;
        double lastCx = 0, lastCy = 0;  // the last control point, for S and T
        char lastKind = 0;
        auto fail = [&]() -> KSvgError {
            return KSvgError("path data \"" + d.substr(0, 40) + (d.size() > 40 ? "..." : "") + "\" breaks at character " +
                             std::to_string(s - begin + 1));
        };
        auto skip = [&] {
            while (*s == ' ' || *s == ',' || *s == '\t' || *s == '\n' || *s == '\r') ++s;
        };
        auto number = [&]() {
            skip();
            char* end = nullptr;
            const double v = std::strtod(s, &end);
            if (end == s || !std::isfinite(v)) throw fail();
            s = end;
            return v;
        };
        auto flag = [&]() {
            skip();
            if (*s != '0' && *s != '1') throw fail();
            return *s++ == '1';
        };
        while (true) {
            skip();
            if (!*s) break;
            if (std::isalpha(static_cast<unsigned char>(*s))) {
                command = *s++;
                if (!std::strchr("MmLlHhVvCcSsQqTtAaZz", command)) {
                    --s;
                    throw fail();
                }
            } else if (!command) {
                throw fail();
            }
            const bool rel = std::islower(static_cast<unsigned char>(command));
            const double ox = rel ? b.cx : 0, oy = rel ? b.cy : 0;
            char kind = static_cast<char>(std::toupper(static_cast<unsigned char>(command)));
            switch (kind) {
            case 'M': {
                const double x = number() + ox, y = number() + oy;
                b.Move(x, y);
                command = rel ? 'l' : 'L';  // further pairs are lines
                break;
            }
            case 'L': {
                const double x = number() + ox, y = number() + oy;
                b.Line(x, y);
                break;
            }
            case 'H': b.Line(number() + ox, b.cy); break;
            case 'V': b.Line(b.cx, number() + oy); break;
            case 'C': {
                const double x1 = number() + ox, y1 = number() + oy, x2 = number() + ox, y2 = number() + oy;
                const double x = number() + ox, y = number() + oy;
                b.Cubic(x1, y1, x2, y2, x, y);
                lastCx = x2, lastCy = y2;
                break;
            }
            case 'S': {
                const double x1 = lastKind == 'C' ? 2 * b.cx - lastCx : b.cx, y1 = lastKind == 'C' ? 2 * b.cy - lastCy : b.cy;
                const double x2 = number() + ox, y2 = number() + oy, x = number() + ox, y = number() + oy;
                b.Cubic(x1, y1, x2, y2, x, y);
                lastCx = x2, lastCy = y2;
                kind = 'C';
                break;
            }
            case 'Q': {
                const double x1 = number() + ox, y1 = number() + oy, x = number() + ox, y = number() + oy;
                b.Quad(x1, y1, x, y);
                lastCx = x1, lastCy = y1;
                break;
            }
            case 'T': {
                const double x1 = lastKind == 'Q' ? 2 * b.cx - lastCx : b.cx, y1 = lastKind == 'Q' ? 2 * b.cy - lastCy : b.cy;
                const double x = number() + ox, y = number() + oy;
                b.Quad(x1, y1, x, y);
                lastCx = x1, lastCy = y1;
                kind = 'Q';
                break;
            }
            case 'A': {
                const double rx = number(), ry = number(), rotation = number();
                const bool large = flag(), sweep = flag();
                const double x = number() + ox, y = number() + oy;
                b.Arc(rx, ry, rotation, large, sweep, x, y);
                break;
            }
            case 'Z': b.Close(); break;
            }
            lastKind = kind;
        }
    }

    void Rect(const pugi::xml_node& n, Builder& b)
    {
        const double x = Length(n, "x", 0), y = Length(n, "y", 0), w = Length(n, "width", 0), h = Length(n, "height", 0);
        if (!(w > 0) || !(h > 0)) return;
        double rx = Length(n, "rx", -1), ry = Length(n, "ry", -1);
        if (rx < 0) rx = ry;
        if (ry < 0) ry = rx;
        rx = std::clamp(rx, 0.0, w / 2), ry = std::clamp(ry, 0.0, h / 2);
        if (rx <= 0 || ry <= 0) {
            b.Move(x, y);
            b.Line(x + w, y);
            b.Line(x + w, y + h);
            b.Line(x, y + h);
            b.Close();
            return;
        }
        b.Move(x + rx, y);
        b.Line(x + w - rx, y);
        b.Arc(rx, ry, 0, false, true, x + w, y + ry);
        b.Line(x + w, y + h - ry);
        b.Arc(rx, ry, 0, false, true, x + w - rx, y + h);
        b.Line(x + rx, y + h);
        b.Arc(rx, ry, 0, false, true, x, y + h - ry);
        b.Line(x, y + ry);
        b.Arc(rx, ry, 0, false, true, x + rx, y);
        b.Close();
    }

    void Ellipse(const pugi::xml_node& n, Builder& b, double rx, double ry)
    {
        if (!(rx > 0) || !(ry > 0)) return;
        const double cx = Length(n, "cx", 0), cy = Length(n, "cy", 0);
        b.Move(cx + rx, cy);
        b.Arc(rx, ry, 0, false, true, cx, cy + ry);
        b.Arc(rx, ry, 0, false, true, cx - rx, cy);
        b.Arc(rx, ry, 0, false, true, cx, cy - ry);
        b.Arc(rx, ry, 0, false, true, cx + rx, cy);
        b.Close();
    }

    void Poly(const pugi::xml_node& n, Builder& b, bool closed, bool line)
    {
        std::vector<double> v;
        if (line) {
            v = {Length(n, "x1", 0), Length(n, "y1", 0), Length(n, "x2", 0), Length(n, "y2", 0)};
        } else if (!Numbers(n.attribute("points").value(), v)) {
            throw KSvgError(std::string("<") + n.name() + "> points \"" + n.attribute("points").value() + "\" are not numbers");
        }
        if (v.size() % 2) v.pop_back();
        for (size_t i = 0; i + 1 < v.size(); i += 2) {
            if (i == 0) b.Move(v[0], v[1]);
            else b.Line(v[i], v[i + 1]);
        }
        if (closed && !v.empty()) b.Close();
    }
};

// Pixels to four decimals, far finer than shape space keeps them.
std::string Shortest(double v)
{
    char text[48];
    std::snprintf(text, sizeof text, "%.4f", v);
    std::string s = text;
    s.erase(s.find_last_not_of('0') + 1);
    if (s.back() == '.') s.pop_back();
    return s == "-0" ? "0" : s;
}

std::string Hex(const KColor& premultiplied, float& alpha)
{
    alpha = std::clamp(premultiplied.a, 0.0f, 1.0f);
    const float k = alpha > 0.0f ? 1.0f / alpha : 1.0f;
    const float c[3] = {premultiplied.r * k, premultiplied.g * k, premultiplied.b * k};
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", int(std::lround(std::clamp(c[0], 0.0f, 1.0f) * 255)),
                  int(std::lround(std::clamp(c[1], 0.0f, 1.0f) * 255)), int(std::lround(std::clamp(c[2], 0.0f, 1.0f) * 255)));
    return text;
}

std::string PaintAttributes(const char* name, const KColor& color)
{
    float alpha = 0.0f;
    const std::string hex = Hex(color, alpha);
    if (alpha <= 0.0f) return std::string(" ") + name + "=\"none\"";
    std::string s = std::string(" ") + name + "=\"" + hex + "\"";
    if (alpha < 1.0f) s += std::string(" ") + name + "-opacity=\"" + Shortest(alpha) + "\"";
    return s;
}

}  // namespace

KSvgRead KReadSvg(const std::string& text)
{
    Reader r;
    r.Read(text);
    return std::move(r.result);
}

KSvgRead KReadSvgFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw KSvgError("cannot read " + path);
    std::stringstream text;
    text << file.rdbuf();
    return KReadSvg(text.str());
}

std::string KWriteSvg(const ShapeListVector& shapes, int32_t width, int32_t height)
{
    const double w = width, h = height;
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                      std::to_string(width) + "\" height=\"" + std::to_string(height) + "\" viewBox=\"0 0 " +
                      std::to_string(width) + " " + std::to_string(height) + "\">\n";
    auto point = [&](const KShapeNode& n) {
        return Shortest((double(n.x) + 0.5) * w) + " " + Shortest(h * 0.5 - double(n.y) * w);
    };
    for (const auto& list : shapes.lists) {
        const KShapeStyle& look = list->styles[0];
        static const char* joins[] = {"miter", "bevel", "round"};
        out += "  <g fill-rule=\"" + std::string(look.fill.rule == 1 ? "evenodd" : "nonzero") + "\" stroke-width=\"" +
               Shortest(look.pen.thickness * 0.01 * w) + "\" stroke-linejoin=\"" + joins[std::clamp(look.pen.joinType, 0, 2)] +
               "\" stroke-linecap=\"" + (look.pen.endType == 1 ? "round" : "butt") + "\">\n";
        for (KShape* s = list->First(); s; s = NextShape(s)) {
            const std::vector<KShapeNode>& n = s->Nodes();
            std::string d;
            for (size_t i = 0; i < n.size();) {
                const bool cubic = n[i].type == kNodeCubic && i > 0 && i + 2 < n.size();
                const bool conic = n[i].type == kNodeConic && i > 0 && i + 1 < n.size();
                if (!d.empty()) d += ' ';
                if (cubic) {
                    d += "C" + point(n[i]) + " " + point(n[i + 1]) + " " + point(n[i + 2]);
                    i += 3;
                } else if (conic) {
                    d += "Q" + point(n[i]) + " " + point(n[i + 1]);
                    i += 2;
                } else {
                    d += (n[i].type == kNodeMove || i == 0 ? "M" : "L") + point(n[i]);
                    ++i;
                }
                if (n[i - 1].closed) d += " Z";
            }
            const KColor fill = s->hasFill ? s->fillColor : look.paints[0].enabled ? look.fill.color : KColor{};
            const KColor pen = s->hasPen ? s->penColor : look.paints[1].enabled ? look.pen.color : KColor{};
            out += "    <path d=\"" + d + "\"" + PaintAttributes("fill", s->IsClosed() ? fill : KColor{}) +
                   PaintAttributes("stroke", pen) + "/>\n";
        }
        out += "  </g>\n";
    }
    return out + "</svg>\n";
}
