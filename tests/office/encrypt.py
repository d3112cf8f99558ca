"""Lets the office suite save documents with a password, or open such documents and save them in clear.

encrypt.py encrypt|decrypt PROFILE PASSWORD SOURCE TARGET [SOURCE TARGET]...

Ends with 0 when every target was written, with 77 when Python or the office suite lacks what this needs.
"""

import os
import subprocess
import sys
import time

try:
    import uno
    from com.sun.star.beans import PropertyValue
except ImportError:
    print("no module uno")
    sys.exit(77)


# By extension: the service that holds such a document, and its own filter.
KINDS = {
    ".odt": ("com.sun.star.text.TextDocument", "writer8"),
    ".ods": ("com.sun.star.sheet.SpreadsheetDocument", "calc8"),
    ".odp": ("com.sun.star.presentation.PresentationDocument", "impress8"),
    ".odg": ("com.sun.star.drawing.DrawingDocument", "draw8"),
}


def url(path):
    return uno.systemPathToFileUrl(os.path.abspath(path))


def connect(process, pipe):
    context = uno.getComponentContext()
    resolver = context.ServiceManager.createInstanceWithContext("com.sun.star.bridge.UnoUrlResolver", context)
    for _ in range(300):
        if process.poll() is not None:
            break
        try:
            return resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
        except Exception:  # not there yet
            time.sleep(0.2)
    print("the office suite doesn't answer")
    sys.exit(77)


def properties(**values):
    return tuple(PropertyValue(name, 0, value, 0) for name, value in values.items())


def main(task, profile, password, *jobs):
    secret = {"Password": password}
    for_load, for_store = ({}, secret) if task == "encrypt" else (secret, {})
    pipe = f"odfmodel-test-{os.getpid()}"
    process = subprocess.Popen(
        ["soffice", f"-env:UserInstallation={url(profile)}", "--headless", "--norestore", "--nologo",
         f"--accept=pipe,name={pipe};urp;"])
    try:
        context = connect(process, pipe)
        desktop = context.ServiceManager.createInstanceWithContext("com.sun.star.frame.Desktop", context)
        for source, target in zip(jobs[0::2], jobs[1::2]):
            service, name = KINDS[os.path.splitext(source)[1]]
            # Without a view: an installation without user interface can't make one.
            document = context.ServiceManager.createInstanceWithContext(service, context)
            document.load(properties(URL=url(source), FilterName=name, **for_load))
            document.storeToURL(url(target), properties(FilterName=name, **for_store))
            document.close(True)
        try:
            desktop.terminate()
        except Exception:  # the connection ends with it
            pass
        process.wait(30)
    finally:
        if process.poll() is None:
            process.kill()


main(*sys.argv[1:])
