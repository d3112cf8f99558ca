"""The naming rules of the element classes: one place that turns XML names into C++ names."""

import re


def _words(text):
    return "".join(word[:1].upper() + word[1:] for word in re.split(r"[-_ .]", text) if word)


def camel(qname):
    """`text:style-name` -> `TextStyleName`, `anim:animateColor` -> `AnimAnimateColor`."""
    return "".join(_words(part) for part in qname.split(":"))


def class_name(qname):
    return "C" + camel(qname)


def enumerator(key):
    """The C++ name of an enumeration key; one that would begin with a digit gets a word in front."""
    name = _words(re.sub(r"[^A-Za-z0-9]", "-", key))
    return name if name[:1].isalpha() else "Value" + name


def prefix(qname):
    return qname.split(":")[0] if ":" in qname else ""


def local(qname):
    return qname.split(":")[-1]
