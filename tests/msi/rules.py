"""What a package for Windows Installer must hold, read back from it by msiinfo.

Facts: the reference of Windows Installer's tables. What Wine ignores is held here alone.
"""
import pathlib
import re
import subprocess
import tempfile

from machine import ROOT, SERVICE

# They never change: a component that got another code would be two on one machine.
UPGRADE_CODE = "{9BE8F357-3EF3-4E2B-9B75-8FAD75C22C2E}"
COMPONENTS = {"Service": "{2277F0CF-C509-5C7A-929A-28947E0E6668}",
              "Support": "{B3A88867-A7E3-5AD1-9CB9-729523703991}",
              "Logs": "{01BECCC0-CF95-5F69-B43E-A1511495E532}"}
GUID = r"\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\}"
# Full control for the system and administrators, reading for users, all inherited below.
ACCESS = {("A", "OICI", "FA", "SY"), ("A", "OICI", "FA", "BA"), ("A", "OICI", "FRFX", "BU")}
ORDER = """AppSearch FindRelatedProducts LaunchConditions RepairInstalled CostInitialize FileCost CostFinalize
  ChooseLogs InstallValidate InstallInitialize RemoveExistingProducts ProcessComponents
  StopServices DeleteServices RemoveFiles RemoveFolders SecureLogFolder CreateFolders InstallFiles
  InstallServices SetRecovery StartServices RegisterProduct PublishProduct InstallFinalize""".split()
# (table, column) and where each of its values is a key.
KEYS = [("Component", "Directory_", "Directory"), ("File", "Component_", "Component"),
        ("ServiceInstall", "Component_", "Component"), ("ServiceControl", "Component_", "Component"),
        ("CreateFolder", "Directory_", "Directory"), ("CreateFolder", "Component_", "Component"),
        ("FeatureComponents", "Component_", "Component"), ("FeatureComponents", "Feature_", "Feature"),
        ("RemoveFile", "Component_", "Component"), ("MsiFileHash", "File_", "File"),
        ("AppSearch", "Signature_", "RegLocator"), ("MsiLockPermissionsEx", "LockObject", "CreateFolder")]


class Tables:
    def __init__(self, msi):
        self.msi = str(pathlib.Path(msi).resolve())
        self.names = self.ask("tables").split()
        self.summary = self.ask("suminfo")
        self.read = {}

    def ask(self, *what):
        # Of a table that holds files it leaves those in its folder.
        with tempfile.TemporaryDirectory() as folder:
            return subprocess.run(["msiinfo", what[0], self.msi, *what[1:]], capture_output=True,
                                  text=True, check=True, cwd=folder).stdout

    def rows(self, table):
        if table not in self.read:
            lines = self.ask("export", table).replace("\r", "").rstrip("\n").split("\n") \
                if table in self.names else [""]
            self.read[table] = [dict(zip(lines[0].split("\t"), row.split("\t")))
                                for row in lines[3:]]
        return self.read[table]

    def by_key(self, table):
        return {next(iter(row.values())): row for row in self.rows(table)}


def violations(msi):
    tables = Tables(msi)
    return [text for rule in (keys, codes, bits, sequences, service, recovery, folders, access,
                              removal, versions, properties) for text in rule(tables)]


def keys(tables):
    for table, column, other in KEYS:
        there = tables.by_key(other)
        for row in tables.rows(table):
            if row[column] not in there:
                yield f"keys: {table}.{column} {row[column]} is not in {other}"
    actions, sources = tables.by_key("CustomAction"), {
        2: tables.by_key("Binary"), 34: tables.by_key("Directory")}
    for name, row in actions.items():
        kind = int(row["Type"]) & 0x3F
        if kind in sources and row["Source"] not in sources[kind]:
            yield f"keys: the source of the action {name} is missing"
        # A program runs in the installation's script, as the system, and its failure counts.
        if kind in sources and int(row["Type"]) - kind != 0x400 + 0x800:
            yield f"keys: the action {name} is not deferred, or is another's"
    for row in tables.rows("Component"):
        if row["KeyPath"] not in tables.by_key("File") and (
                row["KeyPath"] or row["Directory_"] not in tables.by_key("CreateFolder")):
            yield f"keys: {row['Component']} has no key path"


def codes(tables):
    components = {row["Component"]: row["ComponentId"] for row in tables.rows("Component")}
    if components != COMPONENTS:
        yield f"codes: the components are {components}"
    values = tables.by_key("Property")
    product, package = values["ProductCode"]["Value"], re.search(r"UUID\): (.*)", tables.summary)[1]
    found = [product, package, UPGRADE_CODE, *components.values()]
    if not all(re.fullmatch(GUID, code) for code in found) or len(set(found)) != len(found):
        yield f"codes: one is no GUID in capitals, or there twice: {found}"
    upgrades = {row["UpgradeCode"] for row in tables.rows("Upgrade")}
    if upgrades != {UPGRADE_CODE} or values["UpgradeCode"]["Value"] != UPGRADE_CODE:
        yield "codes: the upgrade code has changed"


def bits(tables):
    for text in ("Template: x64;1033", "Version: 500 ", "Source: 2 "):
        if text not in tables.summary:
            yield f"bits: the summary lacks {text}"
    for row in tables.rows("Component"):
        if row["Attributes"] != "256":
            yield f"bits: {row['Component']} is not a plain 64-bit component"
    parents = {row["Directory"]: row["Directory_Parent"] for row in tables.rows("Directory")}
    if parents.get("ProgramFolder") != "ProgramFiles64Folder":
        yield "bits: the programs are not below the 64-bit Program Files"


def sequences(tables):
    rows = tables.rows("InstallExecuteSequence")
    at = {row["Action"]: int(row["Sequence"]) for row in rows}
    places = [at.get(name, 0) for name in ORDER]
    if 0 in places or places != sorted(set(places)):
        yield f"sequences: {[name for _, name in sorted(zip(places, ORDER))]}"
    for name in tables.by_key("CustomAction"):
        if name not in at:
            yield f"sequences: {name} is never run"
    repair = tables.by_key("InstallExecuteSequence").get("RepairInstalled", {}).get("Condition")
    if repair != "Installed AND NOT (REINSTALL OR REMOVE OR ADDLOCAL OR RESUME)":
        yield f"sequences: a second installation does not repair: {repair}"
    if "AppSearch" not in tables.by_key("InstallUISequence"):
        yield "sequences: AppSearch is missing where the launch conditions are asked first"


def service(tables):
    row, = tables.rows("ServiceInstall")
    source = (ROOT / "src/common/service_name.h").read_text()
    if row["Name"] != SERVICE or f'u"{row["Name"]}"' not in source:
        yield f"service: it is named {row['Name']}, not as its program registers"
    # Own process, automatic, and the installation fails with it; no arguments: Windows
    # Installer quotes the path of the component's key file.
    expected = {"ServiceType": "16", "StartType": "2", "ErrorControl": "32769", "Arguments": "",
                "StartName": "LocalSystem", "Password": "", "Component_": "Service"}
    if {name: row[name] for name in expected} != expected or not row["Description"]:
        yield f"service: {row}"
    file = tables.by_key("Component")["Service"]["KeyPath"]
    if file != "hx2208_auth_service.exe":
        yield f"service: its program is {file}"
    # Started by an installation; stopped by every; deleted by the last removal.
    control, = tables.rows("ServiceControl")
    if (control["Name"], control["Event"], control["Wait"]) != (SERVICE, "163", "1"):
        yield f"service: {control}"


def recovery(tables):
    target = tables.by_key("CustomAction")["SetRecovery"]["Target"]
    expected = (f'"[System64Folder]sc.exe" failure "{SERVICE}" reset= {24 * 3600} '
                "actions= restart/3000/restart/30000/restart/600000")
    if target != expected:
        yield f"recovery: {target}"
    # It fails with error 1939 for a restart.
    if "MsiServiceConfigFailureActions" in tables.names:
        yield "recovery: in the table that Windows Installer cannot carry out"


def folders(tables):
    names = {row["Directory"]: row["DefaultDir"].split("|")[-1] for row in tables.rows("Directory")}
    path = "\\".join(names.get(name, "?") for name in ("VendorLogFolder", "ServiceLogFolder"))
    source = (ROOT / "src/common/log_folder.cpp").read_text()
    header = (ROOT / "src/common/log_folder.h").read_text()
    if f'"\\\\{path}"'.replace("\\MA", "\\\\MA") not in source or f'"{names["LogFolder"]}"' not in header:
        yield f"folders: the service logs elsewhere than in {path}\\{names['LogFolder']}"
    target = tables.by_key("CustomAction")["SecureLogFolder"]["Target"]
    vendor, own, last = (names[name] for name in ("VendorLogFolder", "ServiceLogFolder", "LogFolder"))
    if target != f'"[CommonAppDataFolder]." "{vendor}" {own} {last}':
        yield f"folders: secured are others: {target}"
    for row in tables.rows("Directory"):
        if row["Directory"].isupper() and row["Directory"] != "TARGETDIR":
            yield f"folders: {row['Directory']} can be moved from the command line"


def access(tables):
    source = (ROOT / "src/apps/hx2208_log_folder/main.cpp").read_text()
    locked = set()
    for row in tables.rows("MsiLockPermissionsEx"):
        text = row["SDDLText"]
        parts = re.fullmatch(r"O:BAG:SYD:P((?:\([^()]*\))+)", text)
        entries = {tuple(part for part in entry.split(";") if part)
                   for entry in re.findall(r"\(([^()]*)\)", parts[1])} if parts else set()
        if entries != ACCESS or f'"{text}"' not in source or row["Table"] != "CreateFolder" \
                or row["Condition"]:
            yield f"access: {row}"
        locked.add(row["LockObject"])
    if locked != {row["Directory_"] for row in tables.rows("CreateFolder")} or len(locked) != 3:
        yield f"access: locked are {sorted(locked)}"
    if "LockPermissions" in tables.names:
        yield "access: the older table forbids the newer"


def removal(tables):
    found = {row["FileKey"]: (row["FileName"], row["DirProperty"], row["InstallMode"])
             for row in tables.rows("RemoveFile")}
    if found != {"Logs": ("*.log", "LogsToRemove", "2"), "Dumps": ("*.dmp", "DumpsToRemove", "2")}:
        yield f"removal: {found}"
    sequence = tables.by_key("InstallExecuteSequence")
    for name in ("ChooseLogs", "ChooseDumps"):
        if sequence[name]["Condition"] != 'REMOVELOGS="1" AND REMOVE~="ALL" AND NOT UPGRADINGPRODUCTCODE':
            yield f"removal: {name} is not asked for: {sequence[name]['Condition']}"
    # What an administrator has set is neither written nor removed.
    if tables.rows("Registry") or {"RemoveRegistry", "IniFile", "Environment"} & set(tables.names):
        yield "removal: the registry is written or emptied"


def versions(tables):
    version = tables.by_key("Property")["ProductVersion"]["Value"]
    three = version.rpartition(".")[0]
    found = sorted((row["VersionMin"], row["VersionMax"], row["Attributes"], row["ActionProperty"])
                   for row in tables.rows("Upgrade"))
    if found != sorted([("0.0.0", three, "768", "OTHERVERSION"), (three, "", "2", "NEWERVERSION")]):
        yield f"versions: {found}"
    hashed = {row["File_"] for row in tables.rows("MsiFileHash")}
    for row in tables.rows("File"):
        if bool(row["Version"]) == (row["File"] in hashed):
            yield f"versions: {row['File']} needs either a version or a hash"


def properties(tables):
    values = {name: row["Value"] for name, row in tables.by_key("Property").items()}
    expected = {"ALLUSERS": "1", "REBOOT": "ReallySuppress", "MSIRESTARTMANAGERCONTROL": "Disable",
                "REINSTALLMODE": "amus",
                "SecureCustomProperties": "NEWERVERSION;OTHERVERSION;REMOVELOGS;WINDOWSBUILD"}
    if {name: values.get(name) for name in expected} != expected:
        yield f"properties: {values}"
    if "Installed OR WINDOWSBUILD >= 17763" not in tables.by_key("LaunchCondition"):
        yield "properties: any Windows will do"
