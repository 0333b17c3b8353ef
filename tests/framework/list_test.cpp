// The owning intrusive list, names and the messages of OnChange.
#include <gtest/gtest.h>
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

TEST(FrameworkList, AppendLinksInOrder)
{
    int deleted = 0;
    KList list;
    auto* a = new Counted(1, &deleted);
    auto* b = new Counted(2, &deleted);
    auto* c = new Counted(3, &deleted);
    EXPECT_EQ(list.Append(a), a);
    EXPECT_EQ(list.head, a);
    EXPECT_EQ(list.tail, a);
    EXPECT_EQ(a->prev, nullptr);
    EXPECT_EQ(a->next, nullptr);
    list.Append(b);
    list.Append(c);
    EXPECT_EQ(list.count, 3);
    EXPECT_EQ(list.head, a);
    EXPECT_EQ(list.tail, c);
    EXPECT_EQ(a->next, b);
    EXPECT_EQ(b->prev, a);
    EXPECT_EQ(b->next, c);
    EXPECT_EQ(c->prev, b);
    EXPECT_EQ(c->next, nullptr);
    EXPECT_EQ(deleted, 0);
}

TEST(FrameworkList, AppendResetsStaleLinks)
{
    int deleted = 0;
    KList list;
    auto* a = new Counted(1, &deleted);
    auto* stale = new Counted(2, &deleted);
    stale->next = a;  // left over from a walk; must not survive the append
    stale->prev = a;
    list.Append(a);
    list.Append(stale);
    EXPECT_EQ(stale->next, nullptr);
    EXPECT_EQ(stale->prev, a);
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

TEST(FrameworkList, PopHeadHandsOverWithoutDeleting)
{
    int deleted = 0;
    KList list;
    auto* a = new Counted(1, &deleted);
    auto* b = new Counted(2, &deleted);
    list.Append(a);
    list.Append(b);

    KListItem* first = list.PopHead();
    EXPECT_EQ(first, a);
    EXPECT_EQ(list.head, b);
    EXPECT_EQ(b->prev, nullptr);
    EXPECT_EQ(list.count, 1);
    EXPECT_EQ(a->next, b);  // kept: the caller walks on through it
    EXPECT_EQ(deleted, 0);
    delete first;
    EXPECT_EQ(deleted, 1);
}

TEST(FrameworkList, PopOnlyItemLeavesTailOnIt)
{
    int deleted = 0;
    KList list;
    auto* a = new Counted(1, &deleted);
    list.Append(a);
    EXPECT_EQ(list.PopHead(), a);
    EXPECT_EQ(list.head, nullptr);
    EXPECT_EQ(list.count, 0);
    EXPECT_EQ(list.tail, a);  // required as it stands
    EXPECT_EQ(a->next, nullptr);
    EXPECT_EQ(list.PopHead(), nullptr);
    EXPECT_EQ(list.count, 0);
    delete a;
    list.tail = nullptr;  // the popped item is gone; keep the destructor away from it
    EXPECT_EQ(deleted, 1);
}

TEST(FrameworkList, WalkingEmptyByPopVisitsAllInOrder)
{
    int deleted = 0;
    KList list;
    for (int i = 0; i < 4; ++i) list.Append(new Counted(i, &deleted));
    int expected = 0;
    while (KListItem* item = list.PopHead()) {
        EXPECT_EQ(static_cast<Counted*>(item)->tag, expected++);
        EXPECT_EQ(list.count, 4 - expected);
        delete item;
    }
    EXPECT_EQ(expected, 4);
    EXPECT_EQ(deleted, 4);
    list.tail = nullptr;
}

TEST(FrameworkList, NameListHoldsTexts)
{
    KNameList names;
    names.Append(new KName("Red"));
    names.Append(new KName("Lumin."));
    ASSERT_EQ(names.count, 2);
    EXPECT_EQ(static_cast<KName*>(names.head)->text, "Red");
    EXPECT_EQ(static_cast<KName*>(names.tail)->text, "Lumin.");
}

TEST(FrameworkMessage, FloatFormRoundsHalfUpTowardZero)
{
    struct Case { float v; int32_t i; };
    const Case cases[] = {{2.6f, 3}, {2.4f, 2}, {2.5f, 3}, {0.0f, 0}, {-0.7f, 0},
                          {-0.4f, 0}, {-1.6f, -1}, {-2.0f, -1}, {1.0f, 1}};
    for (const Case& c : cases) {
        KMessage m(kMessageValue, 0x41424344u, c.v);
        EXPECT_EQ(m.value.intValue, c.i) << c.v;
        EXPECT_EQ(m.value.floatValue, c.v);
        EXPECT_EQ(m.kind, kMessageValue);
        EXPECT_EQ(m.target, 0x41424344u);
        EXPECT_EQ(m.value.image, nullptr);
        EXPECT_TRUE(m.value.text.empty());
    }
}

TEST(FrameworkMessage, PointAndTextForms)
{
    KMessage point(kMessageValue, 7u, 0.25f, -3.5f);
    EXPECT_EQ(point.value.pointX, 0.25f);
    EXPECT_EQ(point.value.pointY, -3.5f);
    EXPECT_EQ(point.value.intValue, 0);
    EXPECT_EQ(point.value.floatValue, 0.0f);
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
    KMessageList* list = new KMessageList;
    list->Add(new KMessage(kMessageVisible, 1u, 1.0f));
    KMessage* withImage = list->Add(new KMessage(kMessageValue, 2u, 0.5f));
    withImage->value.image = KImage::Create(4, 3, false);
    list->Add(new KMessage(kMessageLabel, 3u, std::string("x")));
    ASSERT_EQ(list->count, 3);
    uint32_t target = 1;
    for (KMessage* m = list->First(); m; m = static_cast<KMessage*>(m->next))
        EXPECT_EQ(m->target, target++);
    delete list;  // frees the messages and the image held by the value
}
