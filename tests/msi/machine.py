"""A machine for packages: a Wine prefix, and the product that is installed in it."""
import os
import pathlib
import re
import signal
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SERVICE = "Nuvelta Wireless AUTH Service HX2208"
WINE, SERVER = "/usr/lib/wine/wine64", "/usr/lib/wine/wineserver64"
FAILED = 1603 & 0xFF  # an exit code has eight bits here


def executables():
    return ROOT / "build" / "windows-clang" / "bin"


def make_msi(output, *options, folder=None):
    made = subprocess.run([ROOT / "tools" / "make_msi", "--executables", folder or executables(),
                           "--output", output, *options], capture_output=True, text=True, check=False)
    if made.returncode:
        raise RuntimeError(made.stderr)
    return made.stdout.strip()


class Machine:
    def __init__(self, name):
        self.prefix = ROOT / "build" / "wine" / name
        self.drive = self.prefix / "drive_c"
        self.program = self.drive / "Program Files" / "Nuvelta Wireless"
        self.vendor_logs = self.drive / "ProgramData" / "Nuvelta Wireless Inc"
        self.logs = self.vendor_logs / "MAService" / "HX2208GW"
        self.environment = {
            **os.environ, "WINEPREFIX": str(self.prefix), "WINEARCH": "win64", "WINEDEBUG": "-all",
            "WINEDLLOVERRIDES": "mscoree=;mshtml=;winemenubuilder.exe=", "WINESERVER": SERVER,
            "DISPLAY": "", "WAYLAND_DISPLAY": "", "TZ": "UTC"}
        subprocess.run([ROOT / "build" / "native" / "bin" / "wine_notebook", "--prefix", self.prefix,
                        "prepare"], check=True, cwd=ROOT)
        self.session = None

    def __enter__(self):
        # Wine ends its services with the last ordinary program.
        self.session = subprocess.Popen([WINE, "cmd"], env=self.environment, stdin=subprocess.PIPE,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.wine("cmd", "/c", "ver")
        return self

    def __exit__(self, *_):
        self.session.stdin.close()
        for what in ("-k", "-w"):
            subprocess.run([SERVER, what], env=self.environment, check=False)
        self.session.wait()

    def wine(self, *command, **options):
        return subprocess.run([WINE, *command], env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=120,
                              check=False, **options)

    def msiexec(self, what, package, *properties, largest_file=None):
        """The exit code's low eight bits; the log is beside the prefix."""
        def limit():
            import resource
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (largest_file, largest_file))
        name = package if str(package).startswith("{") else f"Z:{package}"
        return self.wine("msiexec", what, name, "/qn", "/l*v", f"Z:{self.log}", *properties,
                         preexec_fn=limit if largest_file else None, restore_signals=False).returncode

    @property
    def log(self):
        return self.prefix.with_name(self.prefix.name + ".log")

    def service(self):
        """The state of the service, or "none"."""
        said = self.wine("sc", "query", SERVICE).stdout.decode(errors="replace")
        found = re.search(r"STATE\s+: \d+\s+(\w+)", said)
        return found[1] if found else "none"

    def processes(self):
        """The service's, in this prefix."""
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if (b"hx2208_auth_service.exe" in (entry / "cmdline").read_bytes()
                        and f"WINEPREFIX={self.prefix}".encode() in (entry / "environ").read_bytes()):
                    found.append(entry.name)
            except OSError:
                pass
        return sorted(found)

    def set_value(self, key, name, data):
        self.wine("reg", "add", key, "/v", name, "/t", "REG_DWORD", "/d", str(data), "/f")

    def value(self, key, name):
        said = self.wine("reg", "query", key, "/v", name).stdout.decode(errors="replace")
        found = re.search(r"REG_DWORD\s+(\S+)", said)
        return int(found[1], 16) if found else None

    def traces(self, *codes):
        """The lines of the registry on disk, once Wine has ended, that tell of the product."""
        words = ["nuvelta", "hx2208"] + [packed(code) for code in codes]
        return [line for name in ("system.reg", "user.reg")
                for line in (self.prefix / name).read_text(errors="replace").splitlines()
                if any(word in line.lower() for word in words)
                and "hx2208_classes.dll" not in line]

    def files(self):
        """What the product, and Windows Installer for it, have on the disk."""
        places = [self.program, self.drive / "windows" / "Installer"]
        return sorted(str(path.relative_to(self.drive)) for place in places
                      for path in [place, *place.rglob("*")]
                      if path.exists() and path != places[1])


def packed(code):
    """A GUID as Windows Installer writes it in names of keys."""
    parts = code.strip("{}").lower().split("-")
    swapped = [part[::-1] for part in parts[:3]]
    swapped += ["".join(part[at:at + 2][::-1] for at in range(0, len(part), 2)) for part in parts[3:]]
    return "".join(swapped)
