// A linked list in insertion order, with a hash table of its nodes' names.
#pragma once

#include "registry/registry_name.h"

namespace mirolta::runtime {

// The links inside each node of a NamedList.
template <typename Node>
struct NamedListLinks {
  Node* next = nullptr;
  Node* previous = nullptr;
  Node* next_in_bucket = nullptr;
  uint32_t hash = 0;
};

// NamedList links nodes that it does not own. Node has a member `links` and the operations
// `WideView Name() const` and `bool HasName() const`; Find and At skip nodes without a name.
// Time:   Find takes O(1) on average, At takes O(1) for consecutive indices.
template <typename Node>
class NamedList {
 public:
  Node* First() const { return first_; }
  bool IsEmpty() const { return first_ == nullptr; }
  // The number of nodes with a name.
  size_t NamedCount() const { return named_count_; }

  Node* Find(WideView name) const {
    if (buckets_.IsEmpty()) {
      for (Node* node = first_; node != nullptr; node = node->links.next) {
        if (node->HasName() && SameRegistryName(node->Name(), name)) return node;
      }
      return nullptr;
    }
    const uint32_t hash = RegistryNameHash(name);
    for (Node* node = Bucket(hash); node != nullptr; node = node->links.next_in_bucket) {
      if (node->links.hash == hash && SameRegistryName(node->Name(), name)) return node;
    }
    return nullptr;
  }

  // At returns the node with this index among those with names; null past the end.
  Node* At(size_t index) const {
    if (looked_at_ == nullptr || index < looked_at_index_) {
      looked_at_ = NamedFrom(first_);
      looked_at_index_ = 0;
    }
    for (; looked_at_ != nullptr && looked_at_index_ != index; ++looked_at_index_) {
      looked_at_ = NamedFrom(looked_at_->links.next);
    }
    return looked_at_;
  }

  // Errors: false if memory is short; the list is unchanged.
  [[nodiscard]] bool Append(Node* node) { return Insert(node, last_, nullptr); }
  [[nodiscard]] bool Prepend(Node* node) { return Insert(node, nullptr, first_); }

  void Remove(Node* node) {
    Node* const next = node->links.next;
    Node* const previous = node->links.previous;
    (previous != nullptr ? previous->links.next : first_) = next;
    (next != nullptr ? next->links.previous : last_) = previous;
    --count_;
    if (node->HasName()) --named_count_;
    looked_at_ = nullptr;
    if (buckets_.IsEmpty() || !node->HasName()) return;
    Node** link = &Bucket(node->links.hash);
    while (*link != node) link = &(*link)->links.next_in_bucket;
    *link = node->links.next_in_bucket;
  }

 private:
  // Shorter lists are searched linearly; longer ones have at most one node a bucket on average.
  static constexpr size_t kFewest = 16;

  Node*& Bucket(uint32_t hash) { return buckets_[hash & (buckets_.Size() - 1)]; }
  Node* Bucket(uint32_t hash) const { return buckets_[hash & (buckets_.Size() - 1)]; }

  static Node* NamedFrom(Node* node) {
    while (node != nullptr && !node->HasName()) node = node->links.next;
    return node;
  }

  bool Insert(Node* node, Node* previous, Node* next) {
    if (count_ >= kFewest && count_ >= buckets_.Size() && !Grow()) return false;
    node->links.previous = previous;
    node->links.next = next;
    (previous != nullptr ? previous->links.next : first_) = node;
    (next != nullptr ? next->links.previous : last_) = node;
    ++count_;
    if (node->HasName()) ++named_count_;
    if (next != nullptr) looked_at_ = nullptr;
    if (!buckets_.IsEmpty()) PutInBucket(node);
    return true;
  }

  bool Grow() {
    if (!buckets_.Resize(buckets_.IsEmpty() ? 2 * kFewest : 2 * buckets_.Size())) return false;
    for (size_t i = 0; i < buckets_.Size(); ++i) buckets_[i] = nullptr;
    for (Node* node = first_; node != nullptr; node = node->links.next) PutInBucket(node);
    return true;
  }

  void PutInBucket(Node* node) {
    if (!node->HasName()) return;
    node->links.hash = RegistryNameHash(node->Name());
    Node*& bucket = Bucket(node->links.hash);
    node->links.next_in_bucket = bucket;
    bucket = node;
  }

  Node* first_ = nullptr;
  Node* last_ = nullptr;
  size_t count_ = 0;
  size_t named_count_ = 0;
  mutable Node* looked_at_ = nullptr;  // where At was last; null: nowhere
  mutable size_t looked_at_index_ = 0;
  RuntimeArray<Node*> buckets_;  // none, or a power of two
};

}  // namespace mirolta::runtime
