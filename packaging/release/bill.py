"""The bill of materials (CycloneDX 1.5, JSON), and the notices of third parties."""
import datetime
import hashlib
import json
import subprocess
import urllib.parse
import uuid

import components

PRODUCT = "Nuvelta Wireless AUTH Service HX2208"
SUPPLIER = {"name": "Nuvelta Wireless Inc"}
# What made the executables and is not in them.
TOOLS = ("clang-16", "lld-16", "binutils-mingw-w64-x86-64", "wixl")


def debian_url(package, version):
    return f"pkg:deb/debian/{urllib.parse.quote(package)}@{urllib.parse.quote(version)}?distro=bookworm"


def version_of(package):
    """None of a package that is not installed."""
    asked = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], check=False,
                           capture_output=True, text=True)
    return asked.stdout or None if asked.returncode == 0 else None


def library(row):
    return {
        "type": "library",
        "bom-ref": row.name,
        "supplier": {"name": row.supplier},
        "name": row.name,
        "version": row.version,
        "licenses": [{"expression": row.licence}],
        "purl": debian_url(row.package, row.package_version),
    }


def application(file, version):
    return {
        "type": "application",
        "bom-ref": file.name,
        "supplier": SUPPLIER,
        "name": file.name,
        "version": version,
        "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(file.read_bytes()).hexdigest()}],
    }


def make(release, executables, held):
    """The document of a release; `held` names the components of each executable."""
    used = [row for row in components.COMPONENTS if any(row in rows for rows in held.values())]
    document = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "version": 1,
        "metadata": {
            "timestamp": datetime.datetime.fromtimestamp(release.epoch, datetime.timezone.utc)
                         .strftime("%Y-%m-%dT%H:%M:%SZ"),
            "tools": {"components": [
                {"type": "application", "name": name, "version": version}
                for name in TOOLS if (version := version_of(name))]},
            "component": {
                "type": "application",
                "bom-ref": "release",
                "supplier": SUPPLIER,
                "name": PRODUCT + release.suffix,
                "version": release.version,
                "components": [application(file, release.version) for file in executables],
            },
        },
        "components": [library(row) for row in used],
        "dependencies": [{"ref": "release", "dependsOn": [file.name for file in executables]}] + [
            {"ref": file.name, "dependsOn": [row.name for row in held[file.name]]}
            for file in executables],
    }
    # Another document has another number, the same one the same.
    content = hashlib.sha256(json.dumps(document, sort_keys=True).encode()).hexdigest()
    document["serialNumber"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, content)}"
    return json.dumps(document, indent=2, ensure_ascii=False) + "\n"


def notices(release, held):
    """What the licences ask to be handed on, once for each package."""
    used = [row for row in components.COMPONENTS if any(row in rows for rows in held.values())]
    parts = [f"{PRODUCT} {release.version} holds the following work of others.\n\n" + "".join(
        f"{row.name} {row.version}: {row.licence}; in "
        f"{', '.join(name for name, rows in held.items() if row in rows)}\n" for row in used)]
    for package in dict.fromkeys(row.package for row in used):
        names = ", ".join(row.name for row in used if row.package == package)
        text = next(row.copyright for row in used if row.package == package)
        parts.append(f"{'=' * 78}\n{names}, as the package {package} says:\n\n{text}")
    # The text that the notices of GCC refer to.
    if any(components.GCC_RUNTIME == row.licence for row in used):
        with open("/usr/share/common-licenses/GPL-3", encoding="utf-8") as file:
            parts.append(f"{'=' * 78}\nGNU General Public License, version 3:\n\n{file.read()}")
    return "\n".join(parts)
