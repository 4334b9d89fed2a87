"""What the host and the runtime do while calls of the system fail."""
from fault_runs import Scenario

MEMORY = r"the output cannot be written|[Nn]ot enough (memory|storage)|Out of memory"
# Entries of others, which no registration may lose.
OTHERS = b"""REGEDIT4

[HKEY_CLASSES_ROOT\\Other.Class]
@="of somebody else"

[HKEY_CLASSES_ROOT\\Other.Class\\CLSID]
@="{01020304-0506-0708-090A-0B0C0D0E0F10}"

"""
PLAIN = bytes(range(256)) * 600


FILES = b"""var files = new ActiveXObject("Scripting.FileSystemObject"), text;
files.CopyFile("one/a", "two");
text = files.OpenTextFile("log", 8, true);
text.WriteLine("line");
text.Close();
WScript.Echo(files.GetFolder("one").Files.Count, files.GetFile("two").Size, files.FileExists("one/b"));
"""


def scenarios(build, examples, registered):
    """All of them; `registered` is a registry file with the module's entries and those of others."""
    host, module = f"{build}/bin/mirolta-host", f"{build}/lib/libMirolta.so"
    runtime_calls = f"{build}/tests/runtime_calls"
    registry = {"MIROLTA_REGISTRY": "FOLDER/registry.reg"}
    names = rf"{module}|registry\.reg|{MEMORY}"
    register = [host, "--register", module]
    hashes = [host, f"{examples}/hash-file.js", "SHA256", "plain"]
    encrypts = [host, f"{examples}/encrypt-file.js", "AES", "00112233445566778899aabbccddeeff", "plain", "sealed"]
    yield Scenario("register", register, {"registry.reg": (OTHERS, 0o600)}, registry, messages=names)
    yield Scenario("register_again", register, {"registry.reg": registered}, registry, messages=names)
    yield Scenario("unregister", [host, "--unregister", module], {"registry.reg": registered}, registry,
                   messages=names, again=register)
    yield Scenario("register_first", register, messages=names)
    yield Scenario("register_by_link", register, {"registry.reg": "real.reg", "real.reg": (OTHERS, 0o640)}, registry,
                   messages=rf"{names}|real\.reg")
    yield Scenario("register_system", [host, "--register", "--system", module], {"etc/registry.reg": (OTHERS, 0o644)},
                   {"MIROLTA_SYSTEM_REGISTRY": "FOLDER/etc/registry.reg"}, messages=names)
    yield Scenario("list", [host, "--list"], {"registry.reg": registered}, registry, messages=names)
    files = rf"plain|sealed|hash-file|encrypt-file|shared\.js|{names}"
    yield Scenario("hash", hashes, {"plain": PLAIN}, messages=files)
    yield Scenario("hash_registered", hashes, {"plain": PLAIN, "registry.reg": registered}, registry, messages=files)
    yield Scenario("encrypt", encrypts, {"plain": PLAIN, "sealed": (b"old", 0o640)}, messages=files)
    yield Scenario("encrypt_new", encrypts, {"plain": PLAIN}, messages=files)
    yield Scenario("script_of_input", [host, "-"], stdin=b'WScript.Echo(6 * 7);\n', messages=f"standard input|{MEMORY}")
    lines = b"6*7\n8\n"
    yield Scenario("prompt", [host, "-i"], stdin=lines, messages=f"standard input|{names}")
    yield Scenario("prompt_history", [host, "-i"], {"history": (b"earlier\n" * 3 + b"last\n", 0o600)},
                   {"MIROLTA_HISTORY": "FOLDER/history"}, stdin=b"6*7\n\4", has_terminal=True,
                   messages=f"standard input|{names}", warnings="the history /work/history cannot be written")
    yield Scenario("runtime", [runtime_calls, "plain", "copy"], {"plain": PLAIN, "registry.reg": registered}, registry,
                   messages=rf"\w failed: 0x8\w+|the output|{MEMORY}", drafts=("copy",))
    yield Scenario("files", [host, "files.js"], {"files.js": FILES, "one/a": b"a", "one/b": b"b", "two": b"old"},
                   messages=rf"files\.js|{names}", drafts=("log",))
