// The owning intrusive list, and the messages of OnChange.
#include "framework/list.h"
#include "framework/message.h"
#include "support.h"

namespace {

// Counts its own deletion so that ownership can be observed.
struct Counted : KListItem {
    Counted(int tag, int* deleted) : tag(tag), deleted(deleted) {}
    ~Counted() override { ++*deleted; }
    int tag;
    int* deleted;
};

TEST(FrameworkList, AppendResetsStaleLinksClearDeletesAndPopHeadHandsOver)
{
    int deleted = 0;
    KList list;
    auto* a = new Counted(1, &deleted);
    auto* b = new Counted(2, &deleted);
    b->next = b->prev = a;  // left over from a walk; must not survive the append
    EXPECT_EQ(list.Append(a), a);
    list.Append(b);
    EXPECT_EQ(std::vector<KListItem*>({list.head, a->prev, a->next, b->prev, b->next, list.tail}),
              std::vector<KListItem*>({a, nullptr, b, a, nullptr, b}));
    EXPECT_EQ(list.count, 2);
    // PopHead hands over without deleting; the item keeps its next, for the caller's walk.
    KListItem* first = list.PopHead();
    EXPECT_EQ(std::vector<KListItem*>({first, first->next, list.head, b->prev}), std::vector<KListItem*>({a, b, b, nullptr}));
    EXPECT_EQ(std::make_pair(list.count, deleted), std::make_pair(1, 0));
    delete first;
    KListItem* last = list.PopHead();
    EXPECT_EQ(std::vector<KListItem*>({list.head, list.tail}), std::vector<KListItem*>({nullptr, last}));  // the tail stays
    EXPECT_EQ(list.PopHead(), nullptr);
    delete last;
    list.tail = nullptr;
    // Clear and the destructor delete every item; a cleared list is usable again.
    for (int i = 0; i < 5; ++i) list.Append(new Counted(i, &deleted));
    list.Clear();
    EXPECT_EQ(std::make_tuple(deleted, list.head, list.tail, list.count), std::make_tuple(7, nullptr, nullptr, 0));
    {
        KList scoped;
        scoped.Append(new Counted(7, &deleted));
    }
    EXPECT_EQ(deleted, 8);
}

TEST(FrameworkMessage, FloatFormRoundsHalfUpTowardZeroAndTheOtherForms)
{
    const std::pair<float, int32_t> cases[] = {{2.6f, 3},   {2.4f, 2},   {2.5f, 3},   {0.0f, 0}, {-0.7f, 0},
                                               {-0.4f, 0}, {-1.6f, -1}, {-2.0f, -1}, {1.0f, 1}};
    for (auto [v, i] : cases) {
        KMessage m(kMessageValue, 0x41424344u, v);
        EXPECT_EQ(std::make_tuple(m.value.intValue, m.value.floatValue, m.target), std::make_tuple(i, v, 0x41424344u)) << v;
    }
    KMessage point(kMessageValue, 7u, 0.25f, -3.5f);
    EXPECT_EQ(std::vector<float>({point.value.pointX, point.value.pointY, point.value.floatValue}),
              std::vector<float>({0.25f, -3.5f, 0.0f}));
    KMessage label(kMessageLabel, 9u, std::string("Size [px]"));
    EXPECT_EQ(std::make_tuple(label.kind, label.value.text, label.value.intValue), std::make_tuple(2, "Size [px]", 0));
    // A list keeps its order and owns the images its values hold; moved as
    // OnChange returns it, the items go over and none is left behind.
    KMessageList made;
    made.Add(kMessageVisible, 1u, 1.0f);
    made.Add(kMessageValue, 2u, 0.5f)->value.image = KImage::Create(4, 3, false);
    made.Add(kMessageLabel, 3u, std::string("x"));
    KMessageList list = std::move(made);
    EXPECT_TRUE(made.count == 0 && made.First() == nullptr);
    ASSERT_EQ(list.count, 3);
    uint32_t target = 1;
    for (KMessage* m = list.First(); m; m = static_cast<KMessage*>(m->next)) EXPECT_EQ(m->target, target++);
}

}  // namespace
