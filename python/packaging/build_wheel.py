"""Makes the wheel for pip: builds with CMake and packs what that installs. Needs nothing but Python and the packages
of the project, so `pip install ./python` works without a network."""

import base64
import hashlib
import os
import pathlib
import re
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

PROJECT = pathlib.Path(__file__).resolve().parents[2]
VERSION = re.search(r"project\(odfmodel VERSION ([0-9.]+)", (PROJECT / "CMakeLists.txt").read_text()).group(1)
METADATA = f"""Metadata-Version: 2.1
Name: odfmodel
Version: {VERSION}
Summary: OpenDocument files as trees of typed elements
License: Apache-2.0
Requires-Python: >=3.11
"""


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    tag = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub("[-.]", "_", sysconfig.get_platform())
    name = f"odfmodel-{VERSION}-{tag}-{tag}-{platform}.whl"
    with tempfile.TemporaryDirectory() as folder:
        # A build that is kept makes the next one short.
        build = os.environ.get("ODFMODEL_PYTHON_BUILD", f"{folder}/build")
        subprocess.check_call(["cmake", "-S", PROJECT, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                               "-DODFMODEL_PYTHON=ON", "-DODFMODEL_TESTS=OFF", "-DODFMODEL_EXAMPLES=OFF",
                               "-DODFMODEL_CLI=OFF", f"-DPython3_EXECUTABLE={sys.executable}"])
        subprocess.check_call(["cmake", "--build", build, "--target", "odfmodel_python_package"])
        subprocess.check_call(["cmake", "--install", build, "--component", "python", "--prefix", f"{folder}/root",
                               "--strip"])
        pack(pathlib.Path(folder, "root"), pathlib.Path(wheel_directory, name), f"{tag}-{tag}-{platform}")
    return name


def pack(root, wheel, tag):
    info = f"odfmodel-{VERSION}.dist-info"
    files = {str(path.relative_to(root)): path.read_bytes() for path in sorted(root.rglob("*")) if path.is_file()}
    files[f"{info}/METADATA"] = METADATA.encode()
    files[f"{info}/WHEEL"] = f"Wheel-Version: 1.0\nGenerator: odfmodel\nRoot-Is-Purelib: false\nTag: {tag}\n".encode()
    record = ""
    with zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files.items():
            archive.writestr(name, data)
            digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
            record += f"{name},sha256={digest},{len(data)}\n"
        archive.writestr(f"{info}/RECORD", f"{record}{info}/RECORD,,\n")
