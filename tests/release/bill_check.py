"""Holds a bill of materials to what CycloneDX 1.5's published schema asks of the parts used here,
and its versions to what the libraries themselves say."""
import pathlib
import re

COMPONENT_KEYS = {"type", "bom-ref", "supplier", "name", "version", "licenses", "purl", "hashes",
                  "components"}
TYPES = {"application", "library"}
# What a header says its version is: macros, in order, and the digits of a number that holds all.
HEADERS = {
    "spdlog": ("spdlog/version.h", r"#define SPDLOG_VER_\w+ (\d+)"),
    "fmt": ("fmt/core.h", r"#define FMT_VERSION (\d+)(\d\d)(\d\d)\n"),
    "nlohmann-json": ("nlohmann/detail/abi_macros.hpp",
                      r"#define NLOHMANN_JSON_VERSION_(?:MAJOR|MINOR|PATCH) +(\d+)"),
    "CLI11": ("CLI/Version.hpp", r"#define CLI11_VERSION_\w+ (\d+)"),
}


def faults(bill):
    if set(bill) != {"bomFormat", "specVersion", "serialNumber", "version", "metadata",
                     "components", "dependencies"}:
        yield f"the bill's members are {sorted(bill)}"
    if (bill["bomFormat"], bill["specVersion"], bill["version"]) != ("CycloneDX", "1.5", 1):
        yield "the bill does not say which format it has"
    if not re.fullmatch(r"urn:uuid:[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}", bill["serialNumber"]):
        yield f"serial number {bill['serialNumber']}"
    metadata = bill["metadata"]
    if metadata["timestamp"] != "2023-11-14T22:13:21Z":
        yield f"its date is not the commit's: {metadata['timestamp']}"
    for tool in metadata["tools"]["components"]:
        yield from component(tool)
    yield from component(metadata["component"])
    for row in bill["components"]:
        yield from component(row)
        if not row.get("licenses"):
            yield f"{row['name']} has no licence"
        yield from version(row)

    applications = metadata["component"]["components"]
    references = [row["bom-ref"] for row in
                  [metadata["component"], *applications, *bill["components"]]]
    if len(references) != len(set(references)):
        yield "references are not unique"
    needed = {row["ref"]: set(row["dependsOn"]) for row in bill["dependencies"]}
    for reference in [*needed, *(name for names in needed.values() for name in names)]:
        if reference not in references:
            yield f"{reference} is referred to, and not there"
    # What the two programs are written with; what only one of them holds is not the other's.
    run_times = {"libstdc++", "libgcc", "libssp", "winpthreads", "mingw-w64 C run-time"}
    for name, libraries in (("hx2208_auth_service.exe", {"spdlog", "fmt"}),
                            ("hx2208_support.exe", {"nlohmann-json", "CLI11"})):
        if not libraries | run_times <= needed[name]:
            yield f"{name} holds {sorted(needed[name])}"
    if {"CLI11", "nlohmann-json"} & needed["hx2208_auth_service.exe"]:
        yield "the service holds what only the support program does"


def component(row):
    if not set(row) <= COMPONENT_KEYS or row.get("type") not in TYPES or not row.get("name"):
        yield f"no component: {row}"
    if not row.get("version"):
        yield f"{row.get('name')} has no version"
    for licence in row.get("licenses", []):
        # Of expressions the schema allows one alone.
        if set(licence) != {"expression"} or len(row["licenses"]) != 1:
            yield f"{row['name']}: licences {row['licenses']}"
    for value in row.get("hashes", []):
        if value["alg"] != "SHA-256" or not re.fullmatch(r"[0-9a-f]{64}", value["content"]):
            yield f"{row['name']}: {value}"
    for part in row.get("components", []):
        yield from component(part)


def version(row):
    if row["name"] not in HEADERS:
        return
    header, pattern = HEADERS[row["name"]]
    text = pathlib.Path("/usr/include", header).read_text(encoding="utf-8")
    found = re.findall(pattern, text)
    numbers = found[0] if found and isinstance(found[0], tuple) else found
    said = ".".join(str(int(number)) for number in numbers)
    if said != row["version"]:
        yield f"{row['name']} is {said} by its header, {row['version']} in the bill"
