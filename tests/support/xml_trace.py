"""XML traces as a reader of their own form sees them: well formed, valid by docs/trace.dtd, and with ids that are declared.

The form is that of the document type; nothing here knows what a model should trace.
"""

import pathlib
import subprocess
import xml.etree.ElementTree

DTD = pathlib.Path(__file__).resolve().parents[2] / "docs" / "trace.dtd"
UNDECLARED = "p-1"


class InvalidTrace(Exception):
    """The text says what xmllint or the check of the ids found."""


def validate(document, dtd=DTD):
    """Checks bytes with xmllint: one well-formed document that is valid by the document type."""
    run = subprocess.run(["xmllint", "--noout", "--nonet", "--dtdvalid", str(dtd), "-"], input=document,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if run.returncode != 0:
        raise InvalidTrace(run.stdout.decode(errors="replace"))


def check_references(document):
    """Checks that every id used is declared: of a touched process, of a fired action, and of a variable, unless it says
    that no process declares the variable. Gives the ids of those variables."""
    trace = xml.etree.ElementTree.fromstring(document)
    processes = {process.get("id") for process in trace.iter("Process")}
    actions = {action.get("id") for tag in ("Action", "Undiraction") for action in trace.iter(tag)}
    variables = {variable.get("id") for variable in trace.iter("Var")}

    def require(found, what, used):
        if not found:
            raise InvalidTrace(f"{what} {used} is not declared")

    for process in trace.iter("Process"):
        for variable in process.iter("Var"):
            if variable.get("id") != process.get("id") + variable.get("name"):
                raise InvalidTrace(f"variable {variable.get('id')} stands in process {process.get('id')}")
    for touch in trace.iter("Touch"):
        require(touch.text in processes, "process", touch.text)
    for firing in trace.iter("A"):
        require(firing.get("id") in actions, "action", firing.get("id"))
    undeclared = set()
    for value in trace.iter("V"):
        if value.get("id").startswith(UNDECLARED):
            undeclared.add(value.get("id"))
        else:
            require(value.get("id") in variables, "variable", value.get("id"))
    return undeclared
