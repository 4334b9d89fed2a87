#include "types/copied_library.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "heap/allocation.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {

namespace {

// A bump allocator over one block. With a null base it only measures.
class Arena {
 public:
  explicit Arena(BYTE* base) : base_(base) {}

  template <typename T>
  T* Take(size_t count) {
    used_ = (used_ + alignof(T) - 1) / alignof(T) * alignof(T);
    BYTE* place = base_ == nullptr ? nullptr : base_ + used_;
    used_ += count * sizeof(T);
    if (place == nullptr) return nullptr;
    return new (place) T[count]();
  }

  const OLECHAR* Text(const OLECHAR* text) {
    if (text == nullptr) return nullptr;
    const size_t length = WideLength(text);
    OLECHAR* copy = Take<OLECHAR>(length + 1);
    if (copy != nullptr) std::memcpy(copy, text, (length + 1) * sizeof(OLECHAR));
    return copy;
  }

  size_t Used() const { return used_; }

 private:
  BYTE* base_;
  size_t used_ = 0;
};

// The copiers write through `to` only when the arena has memory.

ValueType CopyType(Arena& arena, ValueType from) {
  return {from.type, arena.Text(from.interface_name)};
}

const MemberRow* CopyMembers(Arena& arena, const MemberRow* from, unsigned count) {
  MemberRow* to = arena.Take<MemberRow>(count);
  for (unsigned i = 0; i < count; ++i) {
    MemberRow row = from[i];
    row.name = arena.Text(row.name);
    row.help = arena.Text(row.help);
    row.result = CopyType(arena, row.result);
    for (ParameterRow& parameter : row.parameters.rows) {
      parameter.name = arena.Text(parameter.name);
      parameter.type = CopyType(arena, parameter.type);
    }
    if (to != nullptr) to[i] = row;
  }
  return to;
}

void CopyTable(Arena& arena, const TypeLibraryTable& from, CopiedLibrary* to) {
  TypeLibraryTable copy = from;
  copy.name = arena.Text(from.name);
  copy.help = arena.Text(from.help);

  InterfaceTable* interfaces = arena.Take<InterfaceTable>(from.interface_count);
  IID* iids = arena.Take<IID>(from.interface_count);
  const InterfaceTable** list = arena.Take<const InterfaceTable*>(from.interface_count);
  for (unsigned i = 0; i < from.interface_count; ++i) {
    InterfaceTable one = *from.interfaces[i];
    one.name = arena.Text(one.name);
    one.help = arena.Text(one.help);
    one.members = CopyMembers(arena, one.members, one.member_count);
    if (to == nullptr) continue;
    iids[i] = *one.iid;
    one.iid = &iids[i];
    interfaces[i] = one;
    list[i] = &interfaces[i];
  }
  copy.interfaces = list;

  ClassTableRow* classes = arena.Take<ClassTableRow>(from.class_count);
  CLSID* class_ids = arena.Take<CLSID>(from.class_count);
  for (unsigned i = 0; i < from.class_count; ++i) {
    ClassTableRow one = from.classes[i];
    one.name = arena.Text(one.name);
    one.help = arena.Text(one.help);
    if (to == nullptr) continue;
    class_ids[i] = *one.id;
    one.id = &class_ids[i];
    for (unsigned k = 0; k < from.interface_count; ++k) {
      if (from.interfaces[k] == from.classes[i].default_interface) {
        one.default_interface = &interfaces[k];
      }
    }
    classes[i] = one;
  }
  copy.classes = classes;

  if (to == nullptr) return;
  to->id = *from.id;
  to->table = copy;
  to->table.id = &to->id;
}

}  // namespace

CopiedLibrary* CopyTypeLibrary(const TypeLibraryTable& table) {
  Arena measure(nullptr);
  measure.Take<CopiedLibrary>(1);
  CopyTable(measure, table, nullptr);

  BYTE* block = static_cast<BYTE*>(AllocateRuntime(measure.Used()));
  if (block == nullptr) return nullptr;
  Arena arena(block);
  CopiedLibrary* copy = arena.Take<CopiedLibrary>(1);
  CopyTable(arena, table, copy);
  return copy;
}

void AddReference(CopiedLibrary* library) {
  library->references.Add();
}

void ReleaseReference(CopiedLibrary* library) {
  if (library->references.Remove() == 0) FreeRuntime(library);
}

}  // namespace mirolta::runtime
