"""What was found, for people and for machines."""

import json
from collections import Counter
from xml.etree import ElementTree

from .runner import DIFFERS, PASSED, SKIPPED


def line(result):
    """Of a difference or of a check that was skipped."""
    text = f"{result.outcome}  {result.name}: {result.check.sentence}\n"
    text += f"         paragraph \"{result.check.paragraph}\"\n"
    if result.outcome == DIFFERS:
        text += f"         what      {result.what}\n"
        text += f"         expected  {result.expected}\n"
        text += f"         found     {result.found}\n"
    elif result.outcome == SKIPPED:
        text += f"         because   {result.what}\n"
    return text


def summary(results, left_behind, seconds):
    counts = Counter(result.outcome for result in results)
    text = (f"{len(results)} checks in {seconds:.1f} s: {counts[PASSED]} passed,"
            f" {counts[DIFFERS]} differ, {counts[SKIPPED]} skipped")
    if counts[SKIPPED]:
        text += " (--skipped says why)"
    for failure in left_behind:
        text += f"\nleft behind: {failure}"
    return text


def as_map(result):
    return {"id": result.check.id, "media": result.media, "paragraph": result.check.paragraph,
            "sentence": result.check.sentence, "outcome": result.outcome,
            "seconds": round(result.seconds, 4), "what": result.what, "expected": result.expected,
            "found": result.found}


def as_json(results, left_behind):
    return json.dumps({"results": [as_map(result) for result in results],
                       "leftBehind": left_behind}, ensure_ascii=False, indent=1) + "\n"


def _xml_text(text):
    return "".join(c if c in "\t\n" or c >= " " and c not in "\ufffe\uffff" else "?" for c in text)


def as_junit(results):
    suite = ElementTree.Element(
        "testsuite", name="qel-contract", tests=str(len(results)),
        failures=str(sum(result.outcome == DIFFERS for result in results)),
        skipped=str(sum(result.outcome == SKIPPED for result in results)))
    for result in results:
        group, _, name = result.name.partition(".")
        case = ElementTree.SubElement(suite, "testcase", classname=group, name=name,
                                      time=f"{result.seconds:.4f}")
        if result.outcome == DIFFERS:
            failure = ElementTree.SubElement(case, "failure", message=_xml_text(result.what))
            failure.text = _xml_text(line(result))
        elif result.outcome == SKIPPED:
            ElementTree.SubElement(case, "skipped", message=_xml_text(result.what))
    return ElementTree.tostring(suite, encoding="unicode", xml_declaration=True) + "\n"
