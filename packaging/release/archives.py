"""Archives and sums whose bytes depend on nothing but what is in them and on a date."""
import hashlib
import time
import zipfile


def write_zip(path, files, epoch):
    """Packs `files`, which names the file of each entry."""
    # The format knows no earlier year, and counts in steps of two seconds.
    date = max(time.gmtime(epoch)[:6], (1980, 1, 1, 0, 0, 0))
    with zipfile.ZipFile(path, "w") as archive:
        for name in sorted(files):
            entry = zipfile.ZipInfo(name, date)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            archive.writestr(entry, files[name].read_bytes(), compresslevel=9)


def write_sums(folder, name="SHA256SUMS"):
    """The sums of all other files of a folder, as sha256sum reads them."""
    lines = [f"{hashlib.sha256(file.read_bytes()).hexdigest()}  {file.name}\n"
             for file in sorted(folder.iterdir()) if file.name != name]
    (folder / name).write_text("".join(lines), encoding="utf-8")
