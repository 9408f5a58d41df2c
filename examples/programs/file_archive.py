# Packs a folder into archives and unpacks them again.
import gzip
import hashlib
import io
import pathlib
import shutil
import tarfile
import tempfile
import zipfile

with tempfile.TemporaryDirectory() as name:
    root = pathlib.Path(name)
    source = root / "source"
    (source / "deep" / "deeper").mkdir(parents=True)
    (source / "läsmich.txt").write_text("Grüße, мир\n", encoding="utf-8")
    (source / "deep" / "numbers.bin").write_bytes(bytes(range(256)) * 100)
    (source / "deep" / "deeper" / "empty").touch()

    def digests(folder):
        return {
            path.relative_to(folder).as_posix(): hashlib.sha256(path.read_bytes()).hexdigest()[:12]
            for path in sorted(folder.rglob("*")) if path.is_file()
        }

    expected = digests(source)
    for path, digest in expected.items():
        print(digest, path)

    with zipfile.ZipFile(root / "all.zip", "w", zipfile.ZIP_DEFLATED) as archive:
        for path in expected:
            archive.write(source / path, path)
    with zipfile.ZipFile(root / "all.zip") as archive:
        assert archive.testzip() is None
        archive.extractall(root / "unzipped")
    assert digests(root / "unzipped") == expected

    for kind in ("gz", "bz2", "xz"):
        with tarfile.open(root / f"all.tar.{kind}", f"w:{kind}") as archive:
            archive.add(source, arcname=".")
        shutil.unpack_archive(root / f"all.tar.{kind}", root / kind)
        assert digests(root / kind) == expected
        print("tar with", kind, "read back")

    packed = io.BytesIO()
    with gzip.GzipFile(fileobj=packed, mode="wb", mtime=0) as file:
        file.write(b"the same again " * 1000)
    print(len(packed.getvalue()) < 200, gzip.decompress(packed.getvalue())[:8])
assert not root.exists()
