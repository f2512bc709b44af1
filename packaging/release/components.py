"""What of other people's work the executables hold, found in what the linker wrote.

The link map names every function that stayed, so it tells of the libraries that are headers
only; the PDB names the archive of every object that was linked, so it tells of the rest.
What is linked and stands in no row here stops the release.
"""
import dataclasses
import pathlib
import re
import subprocess

GCC_RUNTIME = "GPL-3.0-or-later WITH GCC-exception-3.1"


class Unknown(Exception):
    """Something is linked of which nobody knows the licence."""


@dataclasses.dataclass(frozen=True)
class Component:
    name: str
    licence: str  # an SPDX expression
    package: str  # Debian's, which tells version and copyright
    supplier: str
    scope: str = ""  # the namespace of a library that is headers only
    archives: str = ""  # a pattern of the objects and archives of any other

    @property
    def version(self):
        """Upstream's, without what Debian has added to it."""
        text = self.package_version.split(":")[-1].split("-")[0]
        return re.sub(r"[+~](ds|dfsg).*", "", text)

    @property
    def package_version(self):
        return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", self.package], check=True,
                              capture_output=True, text=True).stdout

    @property
    def copyright(self):
        return pathlib.Path(f"/usr/share/doc/{self.package}/copyright").read_text(encoding="utf-8")


GCC = r"/usr/lib/gcc/x86_64-w64-mingw32/[^/]+/"
MINGW = r"/usr/x86_64-w64-mingw32/lib/"
# Of an archive the first row counts that its path matches.
COMPONENTS = (
    Component("spdlog", "MIT", "libspdlog-dev", "Gabi Melman", scope="spdlog"),
    # Its exception only lifts what the licence asks of those who ship executables.
    Component("fmt", "MIT", "libfmt-dev", "Victor Zverovich", scope="fmt"),
    Component("nlohmann-json", "MIT", "nlohmann-json3-dev", "Niels Lohmann", scope="nlohmann"),
    Component("CLI11", "BSD-3-Clause", "libcli11-dev", "University of Cincinnati", scope="CLI"),
    Component("libstdc++", GCC_RUNTIME, "g++-mingw-w64-x86-64-posix", "Free Software Foundation",
              archives=GCC + r"libstdc\+\+\.a"),
    Component("libgcc", GCC_RUNTIME, "gcc-mingw-w64-x86-64-posix", "Free Software Foundation",
              archives=GCC + r"(libgcc|libgcc_eh)\.a"),
    Component("libssp", GCC_RUNTIME, "gcc-mingw-w64-x86-64-posix", "Free Software Foundation",
              archives=GCC + r"(libssp|libssp_nonshared)\.a"),
    Component("winpthreads", "MIT AND BSD-3-Clause", "mingw-w64-x86-64-dev",
              "mingw-w64 project", archives=MINGW + r"lib(win)?pthread\.a"),
    # Import libraries of the system's own libraries among them.
    Component("mingw-w64 C run-time", "ZPL-2.1", "mingw-w64-x86-64-dev", "mingw-w64 project",
              archives=MINGW + r"(crt\w+\.o|lib\w+\.a)"),
)
OWN = re.compile(r"src[/\\].*")


def linked_files(symbols):
    """The objects and archives that went into an executable, by its PDB."""
    listed = subprocess.run(["llvm-pdbutil-16", "dump", "--modules", symbols], check=True,
                            capture_output=True, text=True).stdout
    return sorted({name for name in re.findall(r"Obj: `(.*)`", listed) if name})


def scopes(link_map):
    """The namespaces whose functions stayed in an executable, by its link map."""
    return set(re.findall(r"(?<![\w:])(\w+)::", pathlib.Path(link_map).read_text(encoding="utf-8")))


def held_by(executable):
    """The components that an executable holds; its map and PDB are beside it."""
    held = set()
    for name in linked_files(executable.with_suffix(".pdb")):
        row = next((row for row in COMPONENTS if row.archives and re.fullmatch(row.archives, name)),
                   None)
        if row is not None:
            held.add(row)
        elif not OWN.fullmatch(name):
            raise Unknown(f"{executable.name} holds {name}, which the table of components lacks")
    present = scopes(executable.with_suffix(".map"))
    held |= {row for row in COMPONENTS if row.scope in present}
    return [row for row in COMPONENTS if row in held]
