import pytest

import odfmodel
from odfmodel.text import P, Span


@pytest.fixture
def letter():
    """A text of three paragraphs, the second with a span."""
    document = odfmodel.new("text")
    document.body.extend([P("Dear Ada,"), P("your  order ", Span("No. 7", style_name="Bold"), " is here."), P("Bye")])
    return document


@pytest.fixture
def again():
    """What a document is after saving and opening."""
    return lambda document: odfmodel.open(document.tobytes())
