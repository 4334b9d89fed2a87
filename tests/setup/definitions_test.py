#!/usr/bin/env python3
"""Plants double and unused definitions and sees that the check finds each, and nothing else.

definitions_test.py SCRIPTS_DIR
"""
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1])
import definitions  # noqa: E402

# Files that define and use each name as they should.
CLEAN = {
    "module/value.h": """namespace mirolta {
class Owner {
 public:
  Owner();
  ~Owner();
  int Get() const { return value_; }
 private:
  int value_ = 0;
};
struct Row { int width; };
inline constexpr int kRows = 3;
template <typename T> T Twice(T value) { return value + value; }
}
""",
    "module/value.cpp": """#include "value.h"
namespace mirolta {
namespace {
struct Local { int number; };
int Helper(Local local) { return local.number; }
}
Owner::Owner() = default;
Owner::~Owner() { value_ = Helper(Local{kRows}); }
static int Same() { return 1; }
extern "C" int STDAPICALLTYPE DllEntry() { Owner owner; Row row{Same()}; return Twice(owner.Get()) + row.width; }
}
""",
    "module/other.cpp": """namespace mirolta {
namespace {
struct Local { long number; };
long Helper(Local local) { return local.number; }
}
static int Same() { return 2; }
constexpr int kOwn = 1;
extern "C" int WINAPI OtherEntry() { return Same() + kOwn + Helper(Local{2}); }
}
""",
    "tests/value_test.cpp": """namespace mirolta {
TEST(Value, IsOwned) { Owner owner; }
constexpr int kOwn = 2;
int entry = kOwn;
TEST(Value, HasEntry) { dlsym(entry, "Called"); }
void Called() {}
}
""",
}

# Name, more files, what is found: the check and the name.
PLANTED = [
    ("clean", {}, []),
    ("a class with another destructor",
     {"host/owner.h": "namespace mirolta { class Owner { ~Owner() { Get(); } }; }"},
     ["one-definition mirolta::Owner", "one-definition mirolta::Owner::~Owner()"]),
    ("a class in another namespace", {"host/owner.h": "namespace mirolta::host { class Owner {}; Owner o; int x = o + x; }"},
     []),
    ("a function", {"fuzz/twice.h": "namespace mirolta { int Twice(int v) { return v; } int Twice(T a) { return a; } }"},
     ["one-definition mirolta::Twice(T)"]),
    ("a variable", {"host/rows.h": "namespace mirolta { inline constexpr int kRows = 4; }"},
     ["one-definition mirolta::kRows"]),
    ("members of two local classes of one name",
     {f"host/{file}.cpp": "namespace m { namespace { struct Own { int Get(); }; }\nint Own::Get() { return 1; }\n"
                          "int WINAPI Entry%s() { return Own().Get(); } }" % file for file in "ab"}, []),
    ("a stand-in", {"stub/rows.h": "namespace mirolta { inline constexpr int kRows = 4; }",
                    definitions.LIST: "# Stubs.\none-definition stub/* Stands for the other.\n"}, []),
    ("an unused function", {"host/a.cpp": "namespace mirolta { int Unused(int x) { return x; } }"},
     ["unused Unused"]),
    ("an unused inline member", {"host/a.h": "namespace mirolta { class Box {\n  void RemoveAt() {}\n};\nBox box;\nint y = box + y; }"},
     ["unused RemoveAt"]),
    ("an unused template", {"host/a.h": "template <typename T> T Unused(T x) { return x; } // Unused"},
     ["unused Unused"]),
    ("an unused class, whose own members name it",
     {"host/a.cpp": "namespace m { struct Gone { Gone(); Gone(const Gone&); ~Gone(); };\nGone::Gone() {}\nGone::~Gone() {}\n}"},
     ["unused Gone"]),
    ("a function that a static assertion uses",
     {"host/a.cpp": "namespace m {\nconstexpr bool Holds(int x) { return x > 0; }\nconstexpr int kOne = 1;\n"
                    "static_assert(Holds(kOne));\n}"}, []),
    ("an unused constant", {"host/a.cpp": "namespace m { constexpr int kUnused = 1; }"}, ["unused kUnused"]),
    ("an unused macro", {"host/a.h": "#define UNUSED 1\n"}, ["unused UNUSED"]),
    ("a macro that defines a function",
     {"tests/a_test.cpp": "#define MAKE_TESTS(suite) TEST(suite, Holds) {}\nMAKE_TESTS(First);\n"}, []),
    ("a function that only a comment and a text name",
     {"host/a.cpp": "// Unused(1)\nint Unused() { return 1; }\nextern const char* WINAPI Text() { return \"call Unused\"; }"},
     ["unused Unused"]),
    ("a function that only tests use",
     {"host/a.cpp": "int Probe() { return 1; }", "tests/a_test.cpp": "TEST(A, B) { Probe(); }"},
     ["unused Probe"]),
    ("an excused function",
     {"host/a.cpp": "int Probe() { return 1; }", definitions.LIST: "unused Pro* Tests ask for it.\n"}, []),
    ("an exception without use", {definitions.LIST: "unused Probe No more.\n"}, ["definitions unused Probe excuses nothing"]),
]


def short(line):
    """ "path:1:1: warning: NAME is ... [check]" as "check NAME"."""
    message, check = line.split(": warning: ")[1].rstrip("]").rsplit(" [", 1)
    return f"{check} {message.split(' is ')[0]}"


def main():
    failed = False
    for name, more, expected in PLANTED:
        with tempfile.TemporaryDirectory() as place:
            folder = pathlib.Path(place)
            for path, text in {**CLEAN, **more}.items():
                (folder / path).parent.mkdir(parents=True, exist_ok=True)
                (folder / path).write_text(text)
            _, _, lines = definitions.check(folder)
            found = sorted(short(line) for line in lines)
        if found != expected:
            print(f"{name}: found {found}, planted {expected}")
            failed = True
    definitions_read, names_read, _ = definitions.check()
    if definitions_read < 2000 or names_read < 3000:
        print(f"only {definitions_read} definitions and {names_read} names were read")
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
