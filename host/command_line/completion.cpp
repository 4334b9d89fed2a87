#include "command_line/completion.h"

#include <strings.h>

#include <algorithm>
#include <string>

#include "command_line/member_descriptions.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/object_handle.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr const char* kKeywords[] = {
    "break",      "case",  "catch",   "continue", "default",  "delete", "do",
    "else",       "false", "finally", "for",      "function", "if",     "in",
    "instanceof", "new",   "null",    "return",   "switch",   "this",   "throw",
    "true",       "try",   "typeof",  "var",      "void",     "while",  "with",
};

bool IsNameByte(char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z') || byte == '_' || byte == '$' ||
         static_cast<unsigned char>(byte) >= 0x80;
}

bool IsName(std::string_view text) {
  return !text.empty() && (text[0] < '0' || text[0] > '9') &&
         std::all_of(text.begin(), text.end(), IsNameByte);
}

// A word to complete: WScript.StdOut.Wr
struct Word {
  std::vector<std::string> objects;  // WScript, StdOut
  std::string start;                 // Wr
};

// Returns where the word starts, or the end of the text if there is none to complete.
size_t ParseWord(std::string_view text, Word* word) {
  size_t at = text.size();
  while (at > 0 && (IsNameByte(text[at - 1]) || text[at - 1] == '.')) --at;
  const std::string_view path = text.substr(at);
  size_t begin = 0;
  for (size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.', begin)) {
    word->objects.emplace_back(path.substr(begin, dot - begin));
    begin = dot + 1;
  }
  word->start = path.substr(begin);
  return at + begin;
}

struct CompletionFunction {
  CompletionFunction(const Word* to_complete, std::vector<std::string>* found)
      : word(to_complete), words(found) {}

  const Word* word;
  std::vector<std::string>* words;
  OwnedReference<IDispatch> object;

  duk_ret_t Run(duk_context* engine) {
    duk_push_global_object(engine);
    for (const std::string& name : word->objects) {
      if (!Descend(engine, name)) return 0;
    }
    SlotNumber number = kNoSlot;
    if (HandleAt(engine, -1, &number)) {
      AddMembers(engine, number);
    } else {
      AddProperties(engine);
    }
    if (word->objects.empty()) {
      for (const char* keyword : kKeywords) Add(keyword);
    }
    return 0;
  }

  // Replaces the object on top by its property, unless a script or an automation object would have
  // to compute that.
  static bool Descend(duk_context* engine, const std::string& name) {
    SlotNumber number = kNoSlot;
    for (;;) {
      if (!duk_is_object(engine, -1) || HandleAt(engine, -1, &number)) return false;
      duk_push_lstring(engine, name.data(), name.size());
      duk_get_prop_desc(engine, -2, 0);
      if (duk_is_object(engine, -1)) break;
      duk_pop(engine);
      duk_get_prototype(engine, -1);
    }
    if (!duk_get_prop_string(engine, -1, "value") || duk_is_null_or_undefined(engine, -1)) {
      return false;
    }
    duk_to_object(engine, -1);
    return true;
  }

  void Add(std::string_view name) const {
    if (name.starts_with(word->start) && IsName(name)) words->emplace_back(name);
  }

  void AddProperties(duk_context* engine) const {
    duk_enum(engine, -1, DUK_ENUM_INCLUDE_NONENUMERABLE);
    while (duk_next(engine, -1, 0)) {
      duk_size_t size = 0;
      const char* name = duk_get_lstring(engine, -1, &size);
      Add(SystemFromUnits(UnitsFromEngine({name, size})));
      duk_pop(engine);
    }
    duk_pop(engine);
  }

  void AddMembers(duk_context* engine, SlotNumber number) {
    const ObjectSlot* slot = ContextOf(engine).objects.Find(number, SlotKind::kDispatch);
    if (slot == nullptr) return;
    object.Assign(slot->value.pdispVal);
    for (const MemberDescription& member : DescribeMembers(object.Get())) {
      const std::string start = member.name.substr(0, word->start.size());
      if (strcasecmp(start.c_str(), word->start.c_str()) == 0) words->push_back(member.name);
    }
  }
};

duk_ret_t Complete(duk_context* engine, void* function) {
  return ThrowIfExhausted(engine,
                          [&] { return static_cast<CompletionFunction*>(function)->Run(engine); });
}

}  // namespace

Completions CompleteName(duk_context* engine, std::string_view text) {
  Completions found;
  Word word;
  found.begin = ParseWord(text, &word);
  CompletionFunction function(&word, &found.words);
  if (duk_safe_call(engine, Complete, &function, 0, 1) != DUK_EXEC_SUCCESS) found.words.clear();
  duk_pop(engine);
  std::sort(found.words.begin(), found.words.end());
  found.words.erase(std::unique(found.words.begin(), found.words.end()), found.words.end());
  return found;
}

}  // namespace mirolta::host
