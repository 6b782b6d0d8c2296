// Unit tests of the pooled stitch list: node identity while neighbours come
// and go, head and tail upkeep, the pool's life, copies and iteration.
#include "core/stitch_list.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <tuple>
#include <utility>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace fennick {
namespace {

using Node = std::tuple<int32_t, int32_t, uint32_t>;
using Nodes = std::vector<Node>;

// Reads the list front to back and checks the links against a back-to-front
// walk, the tail and the size.
Nodes ReadNodes(const StitchList& list) {
  Nodes forward;
  std::vector<const StitchNode*> addresses;
  const StitchNode* previous = nullptr;
  for (const StitchNode* node = list.Head(); node != nullptr; node = node->Next()) {
    if (node->Prev() != previous) ADD_FAILURE() << "prev link broken at node " << forward.size();
    forward.emplace_back(node->dx, node->dy, node->flags);
    addresses.push_back(node);
    previous = node;
  }
  EXPECT_EQ(list.Tail(), previous);
  EXPECT_EQ(list.Size(), forward.size());
  EXPECT_EQ(list.Empty(), forward.empty());
  size_t index = addresses.size();
  for (const StitchNode* node = list.Tail(); node != nullptr; node = node->Prev()) {
    if (index == 0 || addresses[--index] != node) {
      ADD_FAILURE() << "backward walk disagrees with forward walk";
      break;
    }
  }
  return forward;
}

// Bytes the process holds on the heap right now.
size_t AllocatedBytes() {
#if defined(__SANITIZE_ADDRESS__)
  return __sanitizer_get_current_allocated_bytes();
#else
  // Large blocks are mapped on their own and counted apart from the arena.
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
#endif
}

StitchList ListOf(const Nodes& nodes) {
  StitchList list;
  for (const auto& [dx, dy, flags] : nodes) list.PushBack(dx, dy, flags);
  return list;
}

TEST(StitchList, NewListIsEmpty) {
  StitchList list;
  EXPECT_EQ(list.Head(), nullptr);
  EXPECT_EQ(list.Tail(), nullptr);
  EXPECT_TRUE(ReadNodes(list).empty());
}

TEST(StitchList, PushBackAndPushFrontKeepOrder) {
  StitchList list;
  StitchNode* b = list.PushBack(2, 0, 0);
  StitchNode* c = list.PushBack(3, 0, STITCH_JUMP);
  StitchNode* a = list.PushFront(1, 0, STITCH_COLORSTOP);
  EXPECT_EQ(ReadNodes(list), (Nodes{{1, 0, 1}, {2, 0, 0}, {3, 0, 2}}));
  EXPECT_EQ(list.Head(), a);
  EXPECT_EQ(list.Tail(), c);
  EXPECT_EQ(a->Next(), b);
  EXPECT_EQ(c->Prev(), b);
}

TEST(StitchList, PushFrontOnEmptyListIsHeadAndTail) {
  StitchList list;
  StitchNode* only = list.PushFront(7, 8, 0);
  EXPECT_EQ(list.Head(), only);
  EXPECT_EQ(list.Tail(), only);
  EXPECT_EQ(ReadNodes(list), (Nodes{{7, 8, 0}}));
}

TEST(StitchList, InsertAtEitherEndMovesHeadOrTail) {
  StitchList list;
  StitchNode* middle = list.PushBack(2, 0, 0);
  StitchNode* first = list.InsertBefore(middle, 1, 0, 0);
  StitchNode* last = list.InsertAfter(middle, 3, 0, 0);
  EXPECT_EQ(list.Head(), first);
  EXPECT_EQ(list.Tail(), last);
  EXPECT_EQ(ReadNodes(list), (Nodes{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
}

TEST(StitchList, NodesKeepTheirAddressWhileNeighboursChange) {
  StitchList list;
  StitchNode* a = list.PushBack(1, 1, 0);
  StitchNode* b = list.PushBack(2, 2, 0);
  StitchNode* c = list.PushBack(3, 3, 0);
  // Enough inserts to need more than any first pool block.
  for (int i = 0; i < 5000; ++i) list.InsertAfter(a, 10, 0, STITCH_JUMP);
  for (int i = 0; i < 5000; ++i) list.InsertBefore(c, 20, 0, 0);
  StitchNode* beforeB = list.InsertBefore(b, 4, 4, 0);
  StitchNode* afterB = list.InsertAfter(b, 5, 5, 0);
  EXPECT_EQ(b->Prev(), beforeB);
  EXPECT_EQ(b->Next(), afterB);

  list.Remove(beforeB);
  list.Remove(afterB);
  // Remove every inserted node, walking the list as a pass would.
  for (StitchNode* node = list.Head(); node != nullptr;) {
    node = (node == a || node == b || node == c) ? node->Next() : list.Remove(node);
  }
  EXPECT_EQ(ReadNodes(list), (Nodes{{1, 1, 0}, {2, 2, 0}, {3, 3, 0}}));
  EXPECT_EQ(list.Head(), a);
  EXPECT_EQ(a->Next(), b);
  EXPECT_EQ(b->Next(), c);
  EXPECT_EQ(list.Tail(), c);
}

TEST(StitchList, RemoveReturnsTheFollowerAndMendsTheEnds) {
  StitchList list = ListOf({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}});
  StitchNode* second = list.Head()->Next();
  StitchNode* third = second->Next();
  StitchNode* fourth = third->Next();

  EXPECT_EQ(list.Remove(second), third);
  EXPECT_EQ(ReadNodes(list), (Nodes{{1, 0, 0}, {3, 0, 0}, {4, 0, 0}}));

  EXPECT_EQ(list.Remove(list.Head()), third);
  EXPECT_EQ(list.Head(), third);
  EXPECT_EQ(third->Prev(), nullptr);

  EXPECT_EQ(list.Remove(fourth), nullptr);
  EXPECT_EQ(list.Tail(), third);
  EXPECT_EQ(third->Next(), nullptr);

  EXPECT_EQ(list.Remove(third), nullptr);
  EXPECT_EQ(list.Head(), nullptr);
  EXPECT_EQ(list.Tail(), nullptr);
  EXPECT_TRUE(ReadNodes(list).empty());
}

TEST(StitchList, RemovedNodesMakeRoomForNewOnes) {
  StitchList list = ListOf({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
  for (int round = 0; round < 1000; ++round) {
    list.Remove(list.Head()->Next());
    list.InsertAfter(list.Head(), round, 0, 0);
  }
  EXPECT_EQ(ReadNodes(list), (Nodes{{1, 0, 0}, {999, 0, 0}, {3, 0, 0}}));
}

TEST(StitchList, EmptyingTheListHandsThePoolBack) {
  constexpr int kNodes = 20000;
  constexpr size_t kSlack = 1024;  // bookkeeping a list may keep, not its nodes
  struct Case {
    const char* how;
    void (*empty)(StitchList&);
  };
  for (const Case& c : {
           Case{"Remove to the last node", [](StitchList& l) {
                  while (l.Head() != nullptr) l.Remove(l.Head());
                }},
           Case{"Remove from the tail", [](StitchList& l) {
                  while (l.Tail() != nullptr) l.Remove(l.Tail());
                }},
           Case{"Clear", [](StitchList& l) { l.Clear(); }},
       }) {
    SCOPED_TRACE(c.how);
    StitchList list;
    const size_t before = AllocatedBytes();
    for (int i = 0; i < kNodes; ++i) list.PushBack(i, -i, 0);
    const size_t full = AllocatedBytes();
    c.empty(list);
    const size_t emptied = AllocatedBytes();
    // The measurement must see the nodes at all for the check to mean anything.
    ASSERT_GE(full - before, kNodes * sizeof(StitchNode));
    EXPECT_LT(emptied, before + kSlack) << "the emptied list still holds " << emptied - before
                                        << " bytes";
    // And the list is as good as new.
    list.PushBack(5, 6, STITCH_JUMP);
    EXPECT_EQ(ReadNodes(list), (Nodes{{5, 6, 2}}));
  }
}

TEST(StitchList, ReserveAllocatesOnceAndKeepsNodes) {
  constexpr int kNodes = 5000;
  StitchList list;
  StitchNode* first = list.PushBack(1, 2, 0);
  list.Reserve(kNodes);
  const size_t reserved = AllocatedBytes();
  for (int i = 0; i < kNodes; ++i) list.PushBack(i, i, 0);
  const size_t filled = AllocatedBytes();
  EXPECT_EQ(filled, reserved) << "pushing reserved nodes allocated";
  EXPECT_EQ(list.Head(), first);
  EXPECT_EQ(first->dx, 1);
  EXPECT_EQ(first->dy, 2);
  EXPECT_EQ(list.Size(), static_cast<size_t>(kNodes + 1));
  EXPECT_EQ(list.Tail()->dx, kNodes - 1);
}

TEST(StitchList, CopyIsDeepAndIndependent) {
  StitchList original = ListOf({{1, 2, 0}, {3, 4, STITCH_JUMP}, {0, 0, STITCH_COLORSTOP}});
  StitchList copy(original);
  EXPECT_EQ(ReadNodes(copy), ReadNodes(original));
  for (const StitchNode* a = original.Head(); a != nullptr; a = a->Next()) {
    for (const StitchNode* b = copy.Head(); b != nullptr; b = b->Next()) EXPECT_NE(a, b);
  }
  copy.Head()->dx = 100;
  copy.Remove(copy.Tail());
  original.PushBack(9, 9, 0);
  EXPECT_EQ(ReadNodes(copy), (Nodes{{100, 2, 0}, {3, 4, 2}}));
  EXPECT_EQ(ReadNodes(original), (Nodes{{1, 2, 0}, {3, 4, 2}, {0, 0, 1}, {9, 9, 0}}));
}

TEST(StitchList, CopyAssignmentReplacesContent) {
  const StitchList source = ListOf({{7, 7, 0}, {8, 8, 0}});
  StitchList target = ListOf({{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
  target = source;
  EXPECT_EQ(ReadNodes(target), (Nodes{{7, 7, 0}, {8, 8, 0}}));
  EXPECT_NE(target.Head(), source.Head());
  target.PushBack(9, 9, 0);
  EXPECT_EQ(ReadNodes(source), (Nodes{{7, 7, 0}, {8, 8, 0}}));

  StitchList empty;
  target = empty;
  EXPECT_TRUE(ReadNodes(target).empty());
}

TEST(StitchList, SelfAssignmentKeepsContent) {
  StitchList list = ListOf({{1, 2, 0}, {3, 4, 0}});
  StitchList& alias = list;
  list = alias;
  EXPECT_EQ(ReadNodes(list), (Nodes{{1, 2, 0}, {3, 4, 0}}));
}

TEST(StitchList, MoveTakesTheNodes) {
  StitchList source = ListOf({{1, 2, 0}, {3, 4, 0}});
  StitchNode* head = source.Head();
  StitchList moved(std::move(source));
  EXPECT_EQ(ReadNodes(moved), (Nodes{{1, 2, 0}, {3, 4, 0}}));
  EXPECT_EQ(moved.Head(), head);

  StitchList assigned = ListOf({{9, 9, 0}});
  assigned = std::move(moved);
  EXPECT_EQ(ReadNodes(assigned), (Nodes{{1, 2, 0}, {3, 4, 0}}));
  EXPECT_EQ(assigned.Head(), head);
}

TEST(StitchList, IterationVisitsNodesInOrder) {
  StitchList list = ListOf({{1, 0, 0}, {2, 0, STITCH_JUMP}, {3, 0, 0}});
  Nodes seen;
  for (StitchNode& node : list) {
    seen.emplace_back(node.dx, node.dy, node.flags);
    node.dy = node.dx * 10;  // mutable iteration edits in place
  }
  EXPECT_EQ(seen, (Nodes{{1, 0, 0}, {2, 0, 2}, {3, 0, 0}}));

  const StitchList& constList = list;
  Nodes constSeen;
  for (const StitchNode& node : constList) constSeen.emplace_back(node.dx, node.dy, node.flags);
  EXPECT_EQ(constSeen, (Nodes{{1, 10, 0}, {2, 20, 2}, {3, 30, 0}}));
  EXPECT_EQ(std::distance(constList.begin(), constList.end()), 3);

  auto it = list.begin();
  auto before = it++;
  EXPECT_EQ(before->dx, 1);
  EXPECT_EQ(it->dx, 2);
  EXPECT_EQ((++it)->dx, 3);
  EXPECT_EQ(++it, list.end());
}

TEST(StitchList, EmptyListIteratesNothing) {
  StitchList list;
  EXPECT_EQ(list.begin(), list.end());
  const StitchList& constList = list;
  EXPECT_EQ(constList.begin(), constList.end());
}

}  // namespace
}  // namespace fennick
