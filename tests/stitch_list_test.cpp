// Tests of the pooled stitch list: node identity, head and tail, the pool, copies.
#include "core/stitch_list.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "tests/test_support.h"

namespace fennick {
namespace {

using Nodes = std::vector<test::Node>;

// Reads the list front to back; prev links, tail and size must agree with it.
Nodes Read(const StitchList& list) {
  Nodes nodes;
  const StitchNode* previous = nullptr;
  for (const StitchNode& node : list) {
    if (node.Prev() != previous) ADD_FAILURE() << "prev link broken at node " << nodes.size();
    nodes.emplace_back(node.dx, node.dy, node.flags);
    previous = &node;
  }
  EXPECT_EQ(list.Tail(), previous);
  EXPECT_EQ(list.Size(), nodes.size());
  return nodes;
}

StitchList ListOf(const Nodes& nodes) {
  StitchList list;
  for (const auto& [dx, dy, flags] : nodes) list.PushBack(dx, dy, flags);
  return list;
}

TEST(StitchList, EditsKeepOrderHeadAndTail) {
  StitchList list;
  StitchNode* middle = list.PushFront(3, 0, 0);  // on an empty list: head and tail
  EXPECT_EQ(Read(list), (Nodes{{3, 0, 0}}));
  list.PushBack(5, 0, STITCH_JUMP);
  list.PushFront(1, 0, STITCH_COLORSTOP);
  list.InsertBefore(list.Head(), 0, 0, 0);
  list.InsertAfter(list.Tail(), 6, 0, 0);
  list.InsertBefore(middle, 2, 0, 0);
  list.InsertAfter(middle, 4, 0, 0);
  EXPECT_EQ(Read(list), (Nodes{{0, 0, 0}, {1, 0, 1}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 2}, {6, 0, 0}}));
  // Remove returns the follower, or null for the tail.
  StitchNode* second = list.Head()->Next();
  EXPECT_EQ(list.Remove(middle->Prev()), middle);
  EXPECT_EQ(list.Remove(list.Head()), second);
  EXPECT_EQ(list.Remove(list.Tail()), nullptr);
  EXPECT_EQ(Read(list), (Nodes{{1, 0, 1}, {3, 0, 0}, {4, 0, 0}, {5, 0, 2}}));
}

TEST(StitchList, NodesKeepTheirAddressWhileThePoolGrowsAndNeighboursComeAndGo) {
  StitchList list;
  StitchNode* a = list.PushBack(1, 1, 0);
  StitchNode* b = list.PushBack(2, 2, 0);
  StitchNode* c = list.PushBack(3, 3, 0);
  list.Reserve(10000);  // room for the inserts: the list does not grow
  const size_t reserved = list.Capacity();
  ASSERT_GE(reserved, 10003u);
  for (int i = 0; i < 5000; ++i) list.InsertAfter(a, 10, 0, STITCH_JUMP);
  for (int i = 0; i < 5000; ++i) list.InsertBefore(c, 20, 0, 0);
  EXPECT_EQ(list.Capacity(), reserved);
  // Remove every inserted node, walking the list as a pass would.
  for (StitchNode* node = list.Head(); node != nullptr;) {
    node = (node == a || node == b || node == c) ? node->Next() : list.Remove(node);
  }
  EXPECT_EQ(Read(list), (Nodes{{1, 1, 0}, {2, 2, 0}, {3, 3, 0}}));
  EXPECT_EQ((std::vector{list.Head(), a->Next(), b->Next()}), (std::vector{a, b, c}));
}

TEST(StitchList, PoolIsReusedAndHandedBackWhenTheListEmpties) {
  constexpr int kNodes = 20000;
  for (const auto& [how, empty] : std::vector<std::pair<const char*, void (*)(StitchList&)>>{
           {"from the head", [](StitchList& l) { while (!l.Empty()) l.Remove(l.Head()); }},
           {"Clear", [](StitchList& l) { l.Clear(); }}}) {
    SCOPED_TRACE(how);
    StitchList list;
    for (int i = 0; i < kNodes; ++i) list.PushBack(i, -i, 0);
    const size_t full = list.Capacity();
    ASSERT_LT(full, 2u * kNodes);  // so that 20,000 more nodes would make it grow
    // Removed nodes make room for new ones.
    for (int i = 0; i < kNodes; ++i) {
      list.Remove(list.Head()->Next());
      list.InsertAfter(list.Head(), i, 0, 0);
    }
    EXPECT_EQ(list.Capacity(), full);
    empty(list);
    EXPECT_EQ(list.Capacity(), 0u);
    list.PushBack(5, 6, STITCH_JUMP);  // and the list is as good as new
    EXPECT_EQ(Read(list), (Nodes{{5, 6, STITCH_JUMP}}));
  }
}

TEST(StitchList, CopiesAreDeepAndMovesTakeTheNodes) {
  StitchList original = ListOf({{1, 2, 0}, {3, 4, STITCH_JUMP}});
  StitchList copy(original);
  StitchList assigned = ListOf({{7, 0, 0}, {8, 0, 0}, {9, 0, 0}});
  assigned = original;
  StitchList& alias = assigned;
  assigned = alias;
  copy.Head()->dx = 100;
  assigned.Remove(assigned.Tail());
  original.PushBack(9, 9, 0);
  EXPECT_EQ(Read(copy), (Nodes{{100, 2, 0}, {3, 4, STITCH_JUMP}}));
  EXPECT_EQ(Read(assigned), (Nodes{{1, 2, 0}}));
  EXPECT_EQ(Read(original), (Nodes{{1, 2, 0}, {3, 4, STITCH_JUMP}, {9, 9, 0}}));

  // The moved-from list dies first: its nodes must live on in the target.
  auto source = std::make_unique<StitchList>(ListOf({{1, 2, 0}, {3, 4, 0}}));
  StitchNode* head = source->Head();
  StitchList moved(std::move(*source));
  StitchList moveAssigned = ListOf({{9, 9, 0}});
  source = std::make_unique<StitchList>(ListOf({{5, 6, 0}}));
  moveAssigned = std::move(*source);
  source.reset();
  EXPECT_EQ(moved.Head(), head);
  EXPECT_EQ(Read(moved), (Nodes{{1, 2, 0}, {3, 4, 0}}));
  EXPECT_EQ(Read(moveAssigned), (Nodes{{5, 6, 0}}));
}

}  // namespace
}  // namespace fennick
