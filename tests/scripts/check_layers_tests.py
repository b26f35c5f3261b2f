"""What scripts/check-layers lets pass and what it refuses."""
import pathlib
import subprocess
import sys
import tempfile

CORVO = "Host/GuiTools/src/Corvo/"
REFUSED = [
    ("Host/GevGenTLProducer/gxapi/src/a.cpp", '"Base/GCString.h"'),
    ("Host/GevGenTLProducer/gxapi/src/a.cpp", "<QString>"),
    ("Host/GevGenTLProducer/gxapi/src/a.cpp", "HEADER"),
    (CORVO + "MinimalCorvo/a.cpp", '"Lanvane/MainWnd.h"'),
    (CORVO + "MinimalCorvo/a.cpp", '"gxapi/Gx.h"'),
    (CORVO + "MinimalCorvoGigETL/a.cpp", '"../../../../GevGenTLProducer/gxapi/src/GxSocket.h"'),
    (CORVO + "MinimalCorvoGigETL/a.cpp", '"gxapi/../../src/GxSocket.h"'),
    (CORVO + "MinimalCorvoGigETL/a.cpp", '"GxSocket.h"'),
    ("Host/Commissioning/src/a.cpp", "<QtCore/QString>"),
    ("Host/GuiTools/src/Lanvane/a.cpp", '"camsim/Camera.h"'),
    ("Host/Other/a.cpp", ""),
]
PASSED = [
    ("Host/GevGenTLProducer/gxapi/src/b.cpp", '"own.h"'),
    ("Host/Commissioning/src/b.cpp", '"commissioning/Search.h"'),
    ("Host/GuiTools/src/Lanvane/b.cpp", "<QString>"),
]

with tempfile.TemporaryDirectory() as folder:
    for name, header in REFUSED + PASSED:
        path = pathlib.Path(folder, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        (path.parent / "own.h").touch()
        with path.open("a", encoding="utf-8") as file:
            print(f"#  include {header}" if header else "int a;", file=file)
    run = subprocess.run([sys.argv[1], folder], capture_output=True, text=True, check=False)

expected = {f"{name}: " + (f"must not include {header}" if header else "belongs to no layer") for name, header in REFUSED}
expected.add("Host/Other/own.h: belongs to no layer")
found = set(run.stdout.splitlines())
for line in sorted(found ^ expected):
    print("wrongly refused:" if line in found else "not refused:", line)
sys.exit(0 if found == expected and run.returncode == 1 else 1)
