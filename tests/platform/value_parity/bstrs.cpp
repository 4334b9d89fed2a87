// Texts that the system allocates: lengths, contents and terminators.
#include "printing.h"
#include "sections.h"

namespace mirolta::value_parity {

void Bstrs() {
  Section("bstr");
  const auto show = [](const char* what, BSTR text) {
    std::string result =
        Quoted(text) + " " + Decimal(SysStringLen(text)) + " " + Decimal(SysStringByteLen(text));
    if (text != nullptr) result += " end " + Decimal(text[SysStringLen(text)]);
    Print(what, result);
    SysFreeString(text);
  };
  show("null", SysAllocString(nullptr));
  show("empty", SysAllocString(OLESTR("")));
  show("text", SysAllocString(OLESTR("text")));
  show("zeros", SysAllocStringLen(OLESTR("a\0b\0c"), 5));
  show("cut", SysAllocStringLen(OLESTR("abcdef"), 3));
  show("no length", SysAllocStringLen(OLESTR("abc"), 0));
  show("null no length", SysAllocStringLen(nullptr, 0));
  show("bytes", SysAllocStringByteLen("a\0bc", 4));
  show("odd bytes", SysAllocStringByteLen("abc", 3));
  show("no bytes", SysAllocStringByteLen("", 0));
  show("null no bytes", SysAllocStringByteLen(nullptr, 0));
  show("too long", SysAllocStringLen(OLESTR("a"), 0x7FFFFFFEu));
  show("longest", SysAllocStringLen(OLESTR("a"), 0xFFFFFFFFu));
  show("too many bytes", SysAllocStringByteLen("a", 0xFFFFFFFFu));
  const auto change = [](const char* what, const OLECHAR* from, UINT length, bool counted) {
    for (const OLECHAR* old :
         {static_cast<const OLECHAR*>(nullptr), OLESTR(""), OLESTR("former text")}) {
      BSTR text = SysAllocString(old);
      const INT done =
          counted ? SysReAllocStringLen(&text, from, length) : SysReAllocString(&text, from);
      std::string result = Decimal(done != 0) + " " + Decimal(SysStringLen(text));
      // Without a source what lies past the former text is not defined.
      const UINT known =
          from == nullptr && counted
              ? (old == nullptr ? 0 : static_cast<UINT>(std::basic_string<OLECHAR>(old).size()))
              : 0xFFFF;
      if (text != nullptr) {
        result += " " + Quoted(text, SysStringLen(text) < known ? SysStringLen(text) : known) +
                  " end " + Decimal(text[SysStringLen(text)]);
      }
      Print(what, result);
      SysFreeString(text);
    }
  };
  change("again text", OLESTR("ab"), 0, false);
  change("again longer", OLESTR("a much longer text than before"), 0, false);
  change("again null", nullptr, 0, false);
  change("again counted", OLESTR("a\0b"), 3, true);
  change("again nothing", OLESTR("abc"), 0, true);
  change("again null shorter", nullptr, 4, true);
  change("again null longer", nullptr, 40, true);
  change("again null nothing", nullptr, 0, true);
  BSTR self = SysAllocString(OLESTR("former text"));
  INT done = SysReAllocStringLen(&self, self, 6);
  Print("itself", Decimal(done != 0) + " " + Quoted(self));
  done = SysReAllocString(&self, self);
  Print("itself", Decimal(done != 0) + " " + Quoted(self));
  SysFreeString(self);
}

}  // namespace mirolta::value_parity
