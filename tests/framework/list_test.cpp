// The owning intrusive list, names and the messages of OnChange.
#include <gtest/gtest.h>
#include <vector>
#include "framework/list.h"
#include "framework/message.h"
#include "raster/image.h"

namespace {

// Counts its own deletion so that ownership can be observed.
class Counted : public KListItem {
public:
    Counted(int tag, int* deleted) : tag(tag), deleted(deleted) {}
    ~Counted() override { ++*deleted; }
    int tag;
    int* deleted;
};

}  // namespace

TEST(FrameworkList, AppendLinksInOrderAndResetsStaleLinks)
{
    int deleted = 0;
    KList list;
    auto* a = new Counted(1, &deleted);
    auto* b = new Counted(2, &deleted);
    auto* c = new Counted(3, &deleted);
    c->next = a;  // left over from a walk; must not survive the append
    c->prev = a;
    EXPECT_EQ(list.Append(a), a);
    EXPECT_EQ(std::vector<KListItem*>({list.head, list.tail, a->prev, a->next}),
              std::vector<KListItem*>({a, a, nullptr, nullptr}));
    list.Append(b);
    list.Append(c);
    EXPECT_EQ(list.count, 3);
    EXPECT_EQ(std::vector<KListItem*>({list.head, a->next, b->prev, b->next, c->prev, c->next, list.tail}),
              std::vector<KListItem*>({a, b, a, c, b, nullptr, c}));
    EXPECT_EQ(deleted, 0);
}

TEST(FrameworkList, ClearAndDestructorDeleteEveryItem)
{
    int deleted = 0;
    {
        KList list;
        for (int i = 0; i < 5; ++i) list.Append(new Counted(i, &deleted));
        list.Clear();
        EXPECT_EQ(deleted, 5);
        EXPECT_EQ(list.head, nullptr);
        EXPECT_EQ(list.tail, nullptr);
        EXPECT_EQ(list.count, 0);
        // A cleared list is usable again, and its destructor frees what it holds.
        list.Append(new Counted(7, &deleted));
        list.Append(new Counted(8, &deleted));
        EXPECT_EQ(list.count, 2);
    }
    EXPECT_EQ(deleted, 7);
}

TEST(FrameworkList, PopHeadHandsOverInOrderWithoutDeleting)
{
    int deleted = 0;
    KList list;
    for (int i = 0; i < 4; ++i) list.Append(new Counted(i, &deleted));
    KListItem* second = list.head->next;
    int expected = 0;
    while (KListItem* item = list.PopHead()) {
        EXPECT_EQ(static_cast<Counted*>(item)->tag, expected++);
        EXPECT_EQ(list.count, 4 - expected);
        if (expected == 1) {
            EXPECT_EQ(item->next, second);  // kept: the caller walks on through it
            EXPECT_EQ(list.head, second);
            EXPECT_EQ(second->prev, nullptr);
            EXPECT_EQ(deleted, 0);
        }
        if (expected == 4) {
            EXPECT_EQ(list.head, nullptr);
            EXPECT_EQ(list.tail, item);  // the tail stays on the last item, as required
            EXPECT_EQ(item->next, nullptr);
        }
        delete item;
    }
    EXPECT_EQ(expected, 4);
    EXPECT_EQ(deleted, 4);
    EXPECT_EQ(list.PopHead(), nullptr);
    EXPECT_EQ(list.count, 0);
    list.tail = nullptr;  // the popped item is gone; keep the destructor away from it
}

TEST(FrameworkMessage, FloatFormRoundsHalfUpTowardZero)
{
    const std::pair<float, int32_t> cases[] = {{2.6f, 3},   {2.4f, 2},   {2.5f, 3},   {0.0f, 0}, {-0.7f, 0},
                                               {-0.4f, 0}, {-1.6f, -1}, {-2.0f, -1}, {1.0f, 1}};
    for (auto [v, i] : cases) {
        KMessage m(kMessageValue, 0x41424344u, v);
        EXPECT_EQ(m.value.intValue, i) << v;
        EXPECT_EQ(m.value.floatValue, v);
        EXPECT_EQ(m.kind, kMessageValue);
        EXPECT_EQ(m.target, 0x41424344u);
        EXPECT_EQ(m.value.image, nullptr);
        EXPECT_TRUE(m.value.text.empty());
    }
}

TEST(FrameworkMessage, PointAndTextForms)
{
    KMessage point(kMessageValue, 7u, 0.25f, -3.5f);
    EXPECT_EQ(std::vector<float>({point.value.pointX, point.value.pointY, point.value.floatValue}),
              std::vector<float>({0.25f, -3.5f, 0.0f}));
    EXPECT_EQ(point.value.intValue, 0);
    EXPECT_TRUE(point.value.text.empty());
    KMessage label(kMessageLabel, 9u, std::string("Size [px]"));
    EXPECT_EQ(label.kind, 2);
    EXPECT_EQ(label.target, 9u);
    EXPECT_EQ(label.value.text, "Size [px]");
    EXPECT_EQ(label.value.intValue, 0);
    EXPECT_EQ(label.value.pointX, 0.0f);
    for (int32_t r : label.value.reserved) EXPECT_EQ(r, 0);
}

TEST(FrameworkMessage, ListKeepsOrderAndOwnsImages)
{
    KMessageList made;
    made.Add(kMessageVisible, 1u, 1.0f);
    KMessage* withImage = made.Add(kMessageValue, 2u, 0.5f);
    withImage->value.image = KImage::Create(4, 3, false);
    made.Add(kMessageLabel, 3u, std::string("x"));
    // Moved as OnChange returns it: the items go over, none is left behind.
    KMessageList list = std::move(made);
    EXPECT_EQ(made.count, 0);
    EXPECT_EQ(made.First(), nullptr);
    ASSERT_EQ(list.count, 3);
    uint32_t target = 1;
    for (KMessage* m = list.First(); m; m = static_cast<KMessage*>(m->next)) EXPECT_EQ(m->target, target++);
    // Leaving scope frees the messages and the image held by the value.
}
