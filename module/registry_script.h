// The language of registry scripts.
//
//   HKCR { entries }                     keys below the classes root
//   name = s 'text' { entries }          a key, its default value and content (both optional);
//                                        unregistration only deletes the value if the key has
//                                        subkeys of other programs
//   val name = s 'text'                  a named value of the enclosing key
//   NoRemove name ...                    a key that unregistration does not delete
//   ForceRemove name ...                 a key that is deleted with all subkeys before it is
//                                        written, and on unregistration
//   'name'                               a name that is a keyword or contains spaces
//   %MODULE%                             the module's full file name, inside quotes
//
// Words are separated by white space: a brace delimits a block only as a word of its own.
#pragma once

#include "platform.h"

namespace mirolta {

// A value may hold the module's file name.
inline constexpr unsigned kLongestRegistryText = MAX_PATH + 63;

enum class KeyRule { kPlain, kNoRemove, kForceRemove };

// The action on each entry of a script. A failure ends the run and is its result.
class RegistryAction {
 public:
  // A key below `parent`, which is null if the parent is missing. *key becomes the parent of the
  // key's content and may be null. `value` is the default value or null.
  virtual HRESULT EnterKey(HKEY parent, const OLECHAR* name, KeyRule rule, const OLECHAR* value,
                           HKEY* key) = 0;
  virtual HRESULT LeaveKey(HKEY parent, const OLECHAR* name, KeyRule rule, HKEY key) = 0;
  virtual HRESULT Value(HKEY key, const OLECHAR* name, const OLECHAR* text) = 0;

 protected:
  ~RegistryAction() = default;
};

// The status for a malformed script.
inline constexpr HRESULT kBadRegistryScript = static_cast<HRESULT>(0x80040153u);

// RunRegistryScript parses a script and performs the action on each entry in order.
// Shapes: text[length], ASCII.
// Errors: kBadRegistryScript for a syntax error, a word of 260 characters or more, more than eight
//         levels of keys, an unknown %NAME%; E_OUTOFMEMORY; the action's failures.
HRESULT RunRegistryScript(const BYTE* text, DWORD length, const OLECHAR* module_file,
                          RegistryAction& action);

}  // namespace mirolta
