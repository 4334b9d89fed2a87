// The lock rule of every member and stream operation, and the results of a call while other threads
// use the same object.
#pragma once

#include <string>
#include <vector>

#include "member_calls.h"

namespace mirolta::test {

enum class Locking {
  kObject,  // the object's own lock, once, for the whole of the call
  kNone,    // no lock at all
};

struct LockRow {
  const char* name;  // as Member::Name and StreamOperationName write it
  Locking locking;
  // Statuses while other threads use the object, as words (see StatusOf); null for classes whose
  // objects are not shared between threads.
  const char* statuses;
  // The results that are possible then: numbers, or how long texts and arrays are. Null: any.
  const char* results = nullptr;
};
const std::vector<LockRow>& LockRows();
const LockRow* LockRowOf(const std::string& name);  // null if there is none

// The status of a word: "ok", "false", "not-initialized" ... Aborts for any other word.
HRESULT StatusOf(const std::string& word);
std::vector<std::string> Words(const char* text);  // none for null

// The operations of IStream, on as many bytes as the buffer has: read into it, written from it or
// copied to `sink`.
struct StreamOperation {
  const char* name;
  HRESULT (*call)(IStream* stream, IStream* sink, Bytes& buffer);
};
// A buffer for them, filled: three blocks of the largest cipher.
inline Bytes StreamBuffer() {
  return PatternBytes(48);
}
const std::vector<StreamOperation>& StreamOperations();
// The classes whose objects have them.
const std::vector<const ClassTableRow*>& StreamClasses();
std::string StreamOperationName(const ClassTableRow& class_row, const StreamOperation& operation);

}  // namespace mirolta::test
