import copy
import gc
import random

import pytest

import odfmodel
from odfmodel.table import Table
from odfmodel.text import A, H, LineBreak, List, ListItem, P, S, Span, Tab
from odfmodel.dc import Title


def texts(element):
    return [child.text for child in element]


def shape(root):
    return [(element.tag, dict(element.attrib), element.text) for element in root.iter()]


def test_built_document_reads_back_as_it_was_built(letter, again):
    letter.body.append(List(ListItem(P("a\tb")), ListItem(P("c\nd"))))
    opened = again(letter)
    assert opened.text() == letter.text() == "Dear Ada,\nyour  order No. 7 is here.\nBye\na\tb\nc\nd"
    assert [child.tag for child in opened.body] == ["text:p", "text:p", "text:p", "text:list"]
    assert shape(opened.body) == shape(letter.body)


def test_elements_are_found_by_class_tag_and_path(letter):
    body = letter.body
    assert body.find(P) is body[0] is body.find("text:p") and body.find(H) is None
    assert [p.text for p in body.findall(P)] == texts(body) and len(body) == 3
    assert body.findall(Span) == [] and body.findall(".//text:span") == list(body.iter(Span)) == body[1].findall("*")[2:]
    assert body.findall("text:p/text:span") == letter.findall(Span) and letter.find(Span).text == "No. 7"
    assert letter.content.find("office:body/office:text") is body
    assert body[-1].text == "Bye" and body[1:] == [body[1], body[2]]
    for wrong in ("text:nonsense", 7, int, ""):
        with pytest.raises((ValueError, TypeError)):
            body.find(wrong)
    with pytest.raises(IndexError):
        body[3]


def test_neighbours_pass_over_text_and_comments(letter):
    span = letter.find(Span)
    assert span.parent is letter.body[1] and span.next is None and span.previous.tag == "text:s"
    assert letter.body[0].next is letter.body[1] and letter.content.parent is None
    assert [part if isinstance(part, str) else part.tag for part in letter.body[1].content] == [
        "your ", "text:s", "order", "text:s", "text:span", " is here."]


@pytest.mark.parametrize("name, value, text", [
    ("style_name", "Bold", "Bold"), ("outline_level", 3, "3"), ("is_list_header", True, "true"),
    ("restart_numbering", False, "false")])
def test_property_is_the_attribute_with_its_type(name, value, text):
    heading = H("Title")
    setattr(heading, name, value)
    key = "text:" + name.replace("_", "-")
    assert heading.attrib == {key: text} and heading.get(key) == text
    assert getattr(heading, name) == value and type(getattr(heading, name)) is type(value)
    setattr(heading, name, None)
    assert getattr(heading, name) is None and key not in heading.attrib


def test_value_that_an_attribute_cannot_have_is_refused():
    heading = H(outline_level=1)
    for name, value, error in [("outline_level", "x", TypeError), ("outline_level", -1, ValueError),
                               ("outline_level", True, TypeError), ("style_name", 5, TypeError),
                               ("is_list_header", 1, TypeError)]:
        with pytest.raises(error):
            setattr(heading, name, value)
    with pytest.raises(AttributeError):
        heading.no_such_thing = 1
    with pytest.raises(TypeError):
        P(5)
    with pytest.raises(ValueError):
        odfmodel.element("text:list").append(odfmodel.element("no:such"))
    assert heading.attrib == {"text:outline-level": "1"}


def test_foreign_attributes_and_elements_are_kept(letter, again):
    mark = odfmodel.element("{urn:x:y}mark")
    mark.text = "here"
    letter.body[0].append(mark)
    letter.body[0].attrib["{urn:x}a"] = "1"
    with pytest.raises(KeyError):
        letter.body[0].attrib["text:nonsense"] = "1"
    first = again(letter).body[0]
    assert first.attrib["{urn:x}a"] == "1" and list(first.attrib) == ["{urn:x}a"]
    assert first[0].tag == "{urn:x:y}mark" and first.find("{urn:x:y}mark").text == "here"
    del first.attrib["{urn:x}a"]
    assert len(first.attrib) == 0


def test_text_set_and_added_is_read_back():
    p = P("a")
    p.append("  b\n")
    p.append(Span("c"))
    p.insert(0, "0 ")
    p[-1].add_after(" end ")
    assert p.text == "0 a  b\nc end "
    link = A("go ", Span("there"), " now", href="x")
    assert link.text == "go there now" and "<text:span>there</text:span> now<" in link.to_xml()
    p.text = " x\ty "
    assert p.text == " x\ty " and [child.tag for child in p] == ["text:s", "text:tab", "text:s"]
    title = Title("One")
    title.append(" two")
    assert title.text == "One two"
    for refuses in (Table(), List()):
        with pytest.raises(TypeError):
            refuses.text = "x"
        with pytest.raises(TypeError):
            refuses.append("x")
    p.clear()
    assert p.text == "" and len(p) == 0


def test_elements_move_and_refuse_what_breaks_the_tree(letter):
    body, (first, second, third) = letter.body, letter.body
    body.append(first)
    assert texts(body)[-1] == "Dear Ada," and len(body) == 3
    body.insert(0, third)
    first.add_before(H("Title"))
    third.add_before(third)
    assert [child.tag[-1] for child in body] == ["p", "p", "h", "p"] and body[0] is third
    before = body.to_xml()
    items = List(ListItem(P("x")))
    for action, error in [(lambda: second.append(body), ValueError), (lambda: items[0][0].append(items), ValueError),
                          (lambda: body.append(letter.content), ValueError), (lambda: body.remove(items), ValueError),
                          (lambda: P().detach(), ValueError), (lambda: body.append(None), TypeError),
                          (lambda: odfmodel.element("meta:creation-date").append(P()), TypeError),
                          (lambda: P().add_after(P()), ValueError)]:
        with pytest.raises(error):
            action()
    assert body.to_xml() == before


def test_iteration_survives_changes_on_the_way(letter):
    for child in letter.body:
        letter.body.remove(child)
    assert len(letter.body) == 0
    letter.body.extend(P(str(n)) for n in range(4))
    for child in letter.body:
        child.add_before(H(child.text))
    assert len(letter.body) == 8


def test_copy_stands_alone(letter):
    second = letter.body[1]
    for made in (second.clone(), copy.copy(second), copy.deepcopy(second)):
        assert made.to_xml() == second.to_xml() and made.parent is None
        made[2].text = "No. 8"
    assert second.text == "your  order No. 7 is here."


def test_held_elements_outlive_what_held_them():
    with odfmodel.new("text") as document:
        document.body.append(List(ListItem(P("one", Span("two")))))
        items = document.body[0]
        span = document.find(Span)
    assert document.closed and span.parent.parent.parent is items
    with pytest.raises(ValueError):
        document.body
    del document, items
    gc.collect()
    assert span.text == "two" and span.parent.parent.parent.parent.tag == "office:text"


def test_held_child_of_a_removed_element_goes_along(letter):
    span, other = letter.find(Span), odfmodel.new("text")
    letter.body.remove(letter.body[1])
    gc.collect()
    assert span.text == "No. 7" and span.parent.parent is None
    other.body.append(span.parent)
    del letter
    gc.collect()
    assert other.find(Span) is span and span.parent.parent is other.body


def test_held_element_outlives_text_that_takes_its_place(letter):
    p = letter.body[1]
    blank, span = p[0], p.find(Span)
    assert letter.replace("r  o", "r - o") == 1
    assert p.text == "your - order No. 7 is here." and blank.tag == "text:s" and blank.parent is None
    p.text = "new"
    assert span.text == "No. 7" and span.parent is None and p.find(Span) is None
    p.append(span)
    assert p.text == "newNo. 7"
    p.clear()
    assert span.parent is None


def test_member_that_goes_leaves_a_copy_to_those_who_hold_it(letter):
    span, content = letter.find(Span), letter.content
    letter.members["content.xml"] = letter.members["content.xml"]
    assert span.text == "No. 7" and span.parent.parent.parent.parent is content
    assert letter.content is not content and letter.find(Span) is not span


def test_random_changes_keep_every_held_element_valid():
    chance = random.Random(13)
    documents = [odfmodel.new("text") for _ in range(2)]
    held = [document.body for document in documents]
    bodies = list(held)
    for step in range(3000):
        element, other = chance.choice(held), chance.choice(held)
        action = chance.randrange(9)
        try:
            if action == 0:
                element.append(chance.choice([P, Span, ListItem, List])())
            elif action == 1:
                element.append(chance.choice(["a b", "  x\ty", "\n"]))
            elif action == 2 and other not in bodies:
                element.append(other)
            elif action == 3 and element not in bodies:
                element.detach()
            elif action == 4:
                element.text = "some  text\n"
            elif action == 5:
                element.replace(" ", "\t")
            elif action == 6:
                element.append(other.clone()) if len(list(other.iter())) < 50 else other.clear()
            elif action == 7 and element not in bodies:
                other.insert(0, element)
            else:
                held.append(chance.choice(list(element.iter())))
        except (TypeError, ValueError):
            pass
        if len(held) > 60:
            chance.shuffle(held)
            del held[30:]
            held += bodies
        if step % 50 == 0:
            for element in held:
                for child in element:
                    assert child.parent is element
                assert element.parent is None or element in list(element.parent)
                assert element.to_xml().count("<") > 0 and isinstance(element.text, str)
    for document in documents:
        assert shape(odfmodel.open(document.tobytes()).body) == shape(document.body)


def test_what_later_versions_brought_is_a_property_too():
    from odfmodel.db import Query
    from odfmodel.loext import ContentControl
    from odfmodel.text import Meta

    paragraph = P(Meta("a"), xml_id="p1")
    assert paragraph.id is None and paragraph.attrib == {"xml:id": "p1"}
    xml = "{http://www.w3.org/XML/1998/namespace}id"
    assert paragraph.attrib[xml] == "p1"
    paragraph.attrib[xml] = "p2"
    assert paragraph.xml_id == "p2"
    del paragraph.attrib[xml]
    assert paragraph.attrib == {}
    assert Query(name="q", escape_processing=True).attrib == {"db:name": "q", "db:escape-processing": "true"}
    assert ContentControl("a", checked=True).checked is True
