"""What the tests of users' programs share: the examples of docs/embedding.md, and an installed tree."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import page_blocks  # noqa: E402

PROJECT = pathlib.Path(__file__).resolve().parents[2]
VERSION = (PROJECT / "VERSION").read_text().strip()
MAJOR = VERSION.split(".", maxsplit=1)[0]
LIBRARIES = ("libMirolta", "libmirolta-runtime")
# The digest that the program of the page prints, and what it prints if the class is not registered.
DIGEST = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD\n"
NOT_REGISTERED = "no object: 0x80040154\n"
# What of this process's environment a user's build may depend on.
KEPT = ("PATH", "HOME", "TMPDIR", "CCACHE_DIR", "CCACHE_MAXSIZE")


def environment(**more):
    kept = {name: os.environ[name] for name in KEPT if name in os.environ}
    return {**kept, "LC_ALL": "C.UTF-8", **{name: str(value) for name, value in more.items()}}


def run(*command, cwd=None, env=None, status=0, errors=subprocess.STDOUT):
    """The output of a command, with its errors unless they go elsewhere; AssertionError if it ends with another
    status."""
    done = subprocess.run([str(word) for word in command], cwd=cwd, env=env or environment(),
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors,
                          text=True, errors="replace", check=False)
    if done.returncode != status:
        raise AssertionError(f"{command} in {cwd}: status {done.returncode}\n{done.stdout}{done.stderr or ''}")
    return done.stdout


def run_by_wine(program, *arguments, prefix):
    """The output of a Windows program alone: a service of Wine may report a crash of its own beside it."""
    env = environment(WINEPREFIX=prefix, WINEDEBUG="-all", WINEDLLOVERRIDES="mscoree=;mshtml=")
    return run("wine", program, *arguments, env=env, errors=subprocess.PIPE).replace("\r", "")


def page_sections():
    """The blocks of docs/embedding.md: section -> language -> text."""
    sections = {}
    section = None
    page = "docs/embedding.md"
    for part in page_blocks.parts_of((PROJECT / page).read_text("utf-8"), page):
        if part.language is not None:
            assert part.language not in section, f"{part.place}: a section has two blocks of {part.language}"
            section[part.language] = part.text
        elif part.text.startswith("## "):
            section = sections.setdefault(part.text[3:].rstrip(), {})
    return sections


PAGE = page_sections()


def new_folder(path):
    shutil.rmtree(path, ignore_errors=True)
    path.mkdir(parents=True)
    return path


def write_project(folder, section):
    """A folder with the program of the page and the section's CMakeLists.txt."""
    new_folder(folder)
    (folder / "hash.cpp").write_text(PAGE["A program"]["cpp"], "utf-8")
    if "cmake" in PAGE[section]:
        (folder / "CMakeLists.txt").write_text(PAGE[section]["cmake"], "utf-8")
    return folder


def build_project(folder, *options, env=None):
    """Configures and builds a folder's project in its folder `build`."""
    run("cmake", "-S", folder, "-B", folder / "build", *options, env=env)
    run("cmake", "--build", folder / "build", "-j", os.cpu_count(), env=env)
    return folder / "build"


def source_files():
    """The project's own files, relative to it: those that git knows, or without git all but builds."""
    if (PROJECT / ".git").exists() and shutil.which("git"):
        listed = run("git", "-c", "safe.directory=*", "-C", PROJECT, "ls-files", "-z").split("\0")
        return sorted(name for name in listed if name and (PROJECT / name).exists())
    return sorted(str(path.relative_to(PROJECT)) for path in PROJECT.rglob("*")
                  if path.is_file() and path.relative_to(PROJECT).parts[0] not in ("build", ".git"))


def pack_sources(folder):
    """Writes the source archive; its path, and the name of the folder in it."""
    name = f"mirolta-{VERSION}"
    with tarfile.open(folder / f"{name}.tar.gz", "w:gz", compresslevel=1) as archive:
        for file in source_files():
            archive.add(PROJECT / file, f"{name}/{file}", recursive=False)
    return folder / f"{name}.tar.gz", name


def write_path_without(folder, *left_out):
    """Fills a folder with links to all commands but those that match the patterns, for PATH. The
    system's come first: its Python knows its packages."""
    new_folder(folder)
    for place in ["/usr/bin", "/bin", *os.environ["PATH"].split(":")]:
        for command in pathlib.Path(place).glob("*"):
            link = folder / command.name
            if not link.is_symlink() and not any(re.fullmatch(each, command.name) for each in left_out):
                link.symlink_to(command)
    return folder


def exercise(program, register, work, **env):
    """The program of the page takes its object from the linked module, and from the registered one
    only after register(registry) has run."""
    registry = work / "registry.reg"
    registry.unlink(missing_ok=True)
    env = environment(MIROLTA_REGISTRY=registry, **env)
    assert PAGE["A program"]["text"] == DIGEST, "the page has another output"
    assert run(program, env=env) == DIGEST
    assert run(program, "registered", env=env, status=1) == NOT_REGISTERED
    register(registry)
    assert run(program, "registered", env=env) == DIGEST
    registry.unlink()


class Installation:
    """An installed tree."""

    def __init__(self, prefix, libdir, host=None):
        self.prefix = prefix
        self.libdir = libdir
        self.host = host or prefix / "bin/mirolta-host"
        self.module = prefix / libdir / f"libMirolta.so.{MAJOR}"

    def register(self, registry):
        said = run(self.host, "--register", self.module, env=environment(MIROLTA_REGISTRY=registry))
        assert said == f"{self.module}: registered\n", said
        # By the name that later versions keep.
        assert f'@="{self.module}"' in registry.read_text("utf-8"), registry.read_text("utf-8")

    def check_names_no_folder_of(self, *folders):
        """No file names the folders that the tree was built from and in."""
        count = 0
        for path in self.prefix.rglob("*"):
            if path.is_symlink():
                assert not os.path.isabs(os.readlink(path)), path
            elif path.is_file():
                count += 1
                data = path.read_bytes()
                for folder in folders:
                    assert os.fsencode(folder) not in data, f"{path} names {folder}"
        assert count > 20, count

    def check_linking(self):
        """Names, needs and run paths of the libraries and the host."""
        def dynamic(path, kind):
            text = run("readelf", "-dW", path)
            return re.findall(rf"\({kind}\).*\[(.*)\]", text)

        host_path = "$ORIGIN/../" + str(self.libdir)
        runtime = f"libmirolta-runtime.so.{MAJOR}"
        for path, soname, run_path, needs_runtime in (
                (self.prefix / self.libdir / "libMirolta.so", f"libMirolta.so.{MAJOR}", ["$ORIGIN"], True),
                (self.prefix / self.libdir / "libmirolta-runtime.so", runtime, [], False),
                (self.host, None, [host_path], True)):
            assert dynamic(path, "SONAME") == ([soname] if soname else []), path
            assert dynamic(path, "RUNPATH") == run_path, (path, dynamic(path, "RUNPATH"))
            assert dynamic(path, "RPATH") == [], path
            needed = dynamic(path, "NEEDED")
            assert (runtime in needed) == needs_runtime, (path, needed)
            assert not [name for name in needed if "/" in name], (path, needed)
            if soname:
                assert os.readlink(path) == soname, path
                assert os.readlink(path.with_name(soname)) == f"{path.name}.{VERSION}", path

    def check_host(self, work):
        """The host finds its own module, where nothing is registered and nothing else is known."""
        script = ('var h = new ActiveXObject("Vardeko.crypt.HashObject"); h.InitHash("SHA256");'
                  'h.HashData("abc"); WScript.Echo(h.Value)')
        env = environment(MIROLTA_REGISTRY=work / "none.reg")
        assert run(self.host, "-e", script, env=env) == DIGEST
        said = run(self.host, "--verbose", "-e", script, env=env)
        assert f"{self.module}, beside the host\n" in said, said

    def check_find_package(self, work, *options):
        folder = write_project(work / "find_package", "find_package")
        build = build_project(folder, f"-DCMAKE_PREFIX_PATH={self.prefix}", "-DCMAKE_CXX_STANDARD=14",
                              "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", *options)
        exercise(build / "hash", self.register, work)
        # The language is raised to what the headers need.
        commands = (build / "compile_commands.json").read_text("utf-8")
        assert " -std=gnu++14 " not in commands and "hash.cpp" in commands, commands

    def check_versions(self, work):
        """The versions that find_package accepts."""
        script = work / "version.cmake"
        file = self.prefix / self.libdir / "cmake/Mirolta/MiroltaConfigVersion.cmake"
        for version, expected in (("1.0", True), (VERSION, True), ("1.99", False), ("2.0", False),
                                  ("0.9", False)):
            script.write_text(f'set(PACKAGE_FIND_VERSION {version})\n'
                              f'set(PACKAGE_FIND_VERSION_MAJOR {version[0]})\n'
                              f'include("{file}")\n'
                              'message("${PACKAGE_VERSION}: ${PACKAGE_VERSION_COMPATIBLE}.")\n', "utf-8")
            said = run("cmake", "-P", script)
            assert (f"{VERSION}: TRUE." in said) == expected, (version, said)

    def check_pkg_config(self, work):
        """Its output in a folder whose name needs quotes: pkg-config puts them before bytes, so that only
        a shell reads them."""
        folder = write_project(work / "pkg config", "pkg-config")
        run("sh", "-euc",
            'eval c++ -std=c++17 hash.cpp -o hash "$(pkg-config --cflags --libs mirolta)"', cwd=folder,
            env=environment(PKG_CONFIG_PATH=self.prefix / self.libdir / "pkgconfig"))
        exercise(folder / "hash", self.register, work, LD_LIBRARY_PATH=self.prefix / self.libdir)
        version = run("pkg-config", "--modversion", "mirolta",
                      env=environment(PKG_CONFIG_PATH=self.prefix / self.libdir / "pkgconfig"))
        assert version == VERSION + "\n", version

    def check_commands(self, work, section):
        """The commands of a section of the page."""
        folder = write_project(work / section.replace(" ", "_"), section)
        commands = PAGE[section]["sh"].replace("$PREFIX/lib", f"$PREFIX/{self.libdir}")
        assert run("sh", "-eu", "-c", commands, cwd=folder,
                   env=environment(PREFIX=self.prefix, MIROLTA_REGISTRY=work / "none.reg")) == DIGEST
        exercise(folder / "hash", self.register, work,
                 LD_LIBRARY_PATH=self.prefix / self.libdir if "pkg" in section else "")
