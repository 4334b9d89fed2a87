#include "command_line/help_function.h"

#include <stdio.h>

#include <string>
#include <vector>

#include "command_line/class_description.h"
#include "command_line/member_descriptions.h"
#include "command_line/result_text.h"
#include "engine/arguments.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/object_handle.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr char kGeneralHelp[] =
    "Type JavaScript; an entry ends when its brackets are closed. The result is printed and kept\n"
    "as _. Tab completes names, the arrow keys and Ctrl-R call back earlier lines, Ctrl-C cancels\n"
    "a line or a command, Ctrl-D ends the prompt.\n"
    "\n"
    "help(object)      the members of an object\n"
    "help(\"ProgID\")    the members of a class\n"
    "mirolta-host --list prints the classes, mirolta-host --help the options.\n";

struct HelpFunction {
  std::string text;
  OwnedReference<IDispatch> object;

  duk_ret_t Run(duk_context* engine) {
    SlotNumber number = kNoSlot;
    if (duk_is_undefined(engine, 0)) {
      text = kGeneralHelp;
    } else if (duk_is_string(engine, 0)) {
      text = SystemFromUnits(UnitsFromEngine(TextArgument(engine, 0)));
      // It prints its messages itself.
      static_cast<void>(DescribeClass(text));
      return 0;
    } else if (HandleAt(engine, 0, &number)) {
      DescribeObject(engine, number);
    } else {
      ListProperties(engine);
    }
    static_cast<void>(fwrite(text.data(), 1, text.size(), stdout));
    return 0;
  }

  void DescribeObject(duk_context* engine, SlotNumber number) {
    const ObjectSlot* slot = ContextOf(engine).objects.Find(number, SlotKind::kDispatch);
    if (slot == nullptr) {
      text = "The object does not describe itself.\n";
      return;
    }
    object.Assign(slot->value.pdispVal);
    const std::vector<MemberDescription> members = DescribeMembers(object.Get());
    text = members.empty() ? "The object does not describe itself.\n" : TypeName(object.Get());
    if (!members.empty()) text += '\n';
    for (const MemberDescription& member : members) {
      text += "  " + member.signature + "  " + member.kind + '\n';
      if (!member.help.empty()) text += "      " + member.help + '\n';
    }
  }

  // The names of an object of the script, one a line.
  void ListProperties(duk_context* engine) {
    if (!duk_is_object(engine, 0)) {
      duk_push_global_object(engine);
      duk_get_prop_string(engine, -1, "Object");
      duk_dup(engine, 0);
      duk_new(engine, 1);
      duk_replace(engine, 0);
    }
    duk_enum(engine, 0, DUK_ENUM_INCLUDE_NONENUMERABLE);
    while (duk_next(engine, -1, 0)) {
      duk_size_t size = 0;
      const char* name = duk_get_lstring(engine, -1, &size);
      text += "  " + SystemFromUnits(UnitsFromEngine({name, size})) + '\n';
      duk_pop(engine);
    }
  }
};

}  // namespace

void InstallHelp(duk_context* engine) {
  duk_push_c_function(engine, RunProtected<HelpFunction>, 1);
  duk_put_global_string(engine, "help");
}

}  // namespace mirolta::host
