// The script language of registration.
//
//   HKCR { entries }                     keys below the classes root
//   name = s 'text' { entries }          a key, its default value, what is in it (both optional);
//                                        unregistration takes the value from a key that stays
//                                        because others have put subkeys into it
//   val name = s 'text'                  a named value of the enclosing key
//   NoRemove name ...                    a key that unregistration leaves
//   ForceRemove name ...                 a key that is deleted with all subkeys before it is
//                                        written, and on unregistration
//   'name'                               a name that would be a word of the language, or has blanks
//   %MODULE%                             the module's full file name, inside quotes
//
// Words are separated by white space, so a brace is a block only if it stands alone.
#pragma once

#include "platform.h"

namespace mirolta {

// A value may hold the module's file name.
inline constexpr unsigned kLongestRegistryText = MAX_PATH + 63;

enum class KeyRule { kPlain, kNoRemove, kForceRemove };

// What is done with a script. Statuses that are failures end the run and are its result.
class RegistryAction {
 public:
  // A key below `parent` (null if the parent is missing): *key becomes what stands for it while
  // its content is run, and may be null. `value` is its default value or null.
  virtual HRESULT EnterKey(HKEY parent, const OLECHAR* name, KeyRule rule, const OLECHAR* value,
                           HKEY* key) = 0;
  virtual HRESULT LeaveKey(HKEY parent, const OLECHAR* name, KeyRule rule, HKEY key) = 0;
  virtual HRESULT Value(HKEY key, const OLECHAR* name, const OLECHAR* text) = 0;

 protected:
  ~RegistryAction() = default;
};

// What a script that cannot be read gives.
inline constexpr HRESULT kBadRegistryScript = static_cast<HRESULT>(0x80040153u);

// RunRegistryScript parses a script and performs the action on each entry in order.
// Shapes: text[length], ASCII.
// Errors: kBadRegistryScript for a syntax error, a word of 260 characters or more, more than eight
//         levels of keys, an unknown %NAME%; the action's failures.
HRESULT RunRegistryScript(const BYTE* text, DWORD length, const OLECHAR* module_file,
                          RegistryAction& action);

}  // namespace mirolta
