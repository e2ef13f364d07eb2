"""The railway's traces written a second time, by a program of its own.

Knows how the railway is put together (its models with their numbers, their variables with their full names, their
activities with their numbers) and the two forms of a trace, and writes, from the runs of reference_railway.py, what the
railway has to write: the trace as text, the trace as an XML document, and its standard output. It shares no code with
the engine.
"""

import collections

import reference_railway
from reference_railway import AFFECTED, ARRAYS, ENABLING, FIELDS, TRAIN_ACTIVITIES, TRACKSIDE_ACTIVITIES

# ---- What the railway is made of ------------------------------------------------------------------------------------

TRAIN_VARIABLES = (
    "trainID",
    "Start",
    "Count",
    "waitForEntering",
    "trainMovement",
    "sendTPR",
    "TPRtoRBC",
    "MAtoRBC",
    "TPRwaiting",
    "trainHasToExit",
    "arrivalTime",
    "trainHeadPositions",
    "trainTailPositions",
    "trainSpeeds",
    "TPRmessages",
    "trainMAs",
    "TPRmsg",
    "MAmessages",
)
TRACKSIDE_VARIABLES = (
    "TPRtoRBC",
    "MAtoRBC",
    "idle",
    "msgIn",
    "TPRmessages",
    "trackStatusAreasHeads",
    "trackStatusAreasTails",
    "MAmessages",
)
JOIN_VARIABLES = ("MAmessages", "MAtoRBC", "TPRmessages", "TPRtoRBC")
FLEET_VARIABLES = (
    "Count",
    *JOIN_VARIABLES,
    "arrivalTime",
    "trainHeadPositions",
    "trainMAs",
    "trainSpeeds",
    "trainTailPositions",
)
# A train shares with the others all that the fleet has, the trackside with the trains all that the join has.
SHARED_BY_OWNER = {"train": set(FLEET_VARIABLES), "trackside": set(JOIN_VARIABLES)}

# The fields of the reference railway that hold the arrays of these names.
FIELD_OF_ARRAY = {
    "MAmessages": "answers",
    "TPRmessages": "reports",
    "arrivalTime": "arrivalTime",
    "trackStatusAreasHeads": "areaHead",
    "trackStatusAreasTails": "areaTail",
    "trainHeadPositions": "head",
    "trainMAs": "authority",
    "trainSpeeds": "speed",
    "trainTailPositions": "tail",
}

# A single value: its full name, whether it is shared with another model, and a function that reads it.
Leaf = collections.namedtuple("Leaf", "name shared read")


def read_place(railway, owner, variable):
    """A mark of the train's own, or one that belongs to the railway."""
    holder = railway if owner is None or variable in SHARED_BY_OWNER["train"] else railway.trains[owner]
    return getattr(holder, variable)


def leaves_of(railway, owner, variable, shared):
    """The leaves of a variable, an array by index and a structure by field, with `owner` the number of a train or None.

    Nothing but the functions reads the railway, as each batch begins with new objects.
    """
    fields = FIELDS.get(variable)
    if variable in ARRAYS:
        array = FIELD_OF_ARRAY[variable]
        for i in range(railway.p["nTrains"]):
            if fields is None:
                yield Leaf(f"{variable}.{i}", shared, lambda i=i: getattr(railway, array)[i])
            for field in fields or ():
                yield Leaf(f"{variable}.{i}.{field}", shared, lambda i=i, f=field: getattr(railway, array)[i][f])
    elif fields is not None:
        for field in fields:
            yield Leaf(f"{variable}.{field}", shared, lambda f=field: read_place(railway, owner, variable)[f])
    else:
        yield Leaf(variable, shared, lambda: read_place(railway, owner, variable))


class Activity:
    """An activity as the traces see it."""

    def __init__(self, number, name, leaves_by_variable):
        self.number = number
        self.name = name
        self.affected = [leaf for variable in AFFECTED[name] for leaf in leaves_by_variable[variable]]
        self.enabling = [leaf for variable in ENABLING[name] for leaf in leaves_by_variable[variable]]


class AtomicModel:
    children = ()

    def __init__(self, number, name, railway, owner, variables):
        self.number = number
        self.name = name
        shared = SHARED_BY_OWNER[name]
        self.by_variable = {name: list(leaves_of(railway, owner, name, name in shared)) for name in variables}
        self.leaves = [leaf for leaves in self.by_variable.values() for leaf in leaves]
        self.activities = []

    def add_activities(self, first_number, names):
        self.activities = [Activity(first_number + i, name, self.by_variable) for i, name in enumerate(names)]


class ComposedModel:
    def __init__(self, number, name, railway, variables):
        self.number = number
        self.name = name
        self.children = []
        self.shared = [leaf for variable in variables for leaf in leaves_of(railway, None, variable, True)]


class Structure:
    """The tree of models. Models are numbered from 1, activities and groups together from 0, as they are constructed:
    first the reward model with two marker actions, then the join and the fleet with one group each, then each train
    with ten activities and six groups, then the trackside with two and two."""

    def __init__(self, railway):
        first_of_join = 2
        number = 2 + 2
        self.root = ComposedModel(first_of_join, "join", railway, JOIN_VARIABLES)
        fleet = ComposedModel(first_of_join + 1, "fleet", railway, FLEET_VARIABLES)
        self.atomic = {}  # by number of the train, None for the trackside
        for train in range(railway.p["nTrains"]):
            model = AtomicModel(first_of_join + 2 + train, "train", railway, train, TRAIN_VARIABLES)
            model.add_activities(number, TRAIN_ACTIVITIES)
            number += len(TRAIN_ACTIVITIES) + 6
            fleet.children.append(model)
            self.atomic[train] = model
        trackside_number = first_of_join + 2 + railway.p["nTrains"]
        trackside = AtomicModel(trackside_number, "trackside", railway, None, TRACKSIDE_VARIABLES)
        trackside.add_activities(number, TRACKSIDE_ACTIVITIES)
        self.atomic[None] = trackside
        self.root.children += [fleet, trackside]

    def activity(self, activity):
        """The reference railway's activity as the traces see it."""
        return next(own for own in self.atomic[activity.owner].activities if own.name == activity.name)


Entry = collections.namedtuple("Entry", "model name first")  # what is scheduled: a single activity, or the cases of one


def entry_of(structure, group):
    first = group.members[0]
    name = first.name if len(group.members) == 1 else first.name.rpartition("_case")[0] + "Group"
    return Entry(structure.atomic[first.owner], name, structure.activity(first))


# ---- The text -------------------------------------------------------------------------------------------------------


class TextTrace:
    """Gives `write` each line."""

    def __init__(self, write, level, structure):
        self.write = write
        self.level = level
        self.root = structure.root

    def header(self):
        for line in ("*" * 38, "\t\tTRACE", "*" * 38):
            self.write(line)

    def new_batch(self):
        self.write("##### NEW BATCH #####")

    def leaves(self, indent, leaves):
        for leaf in leaves:
            self.write(f"{indent}{leaf.name} = {leaf.read()}")

    def model(self, model):
        self.write(f"  Model: ({model.number}){model.name}")
        if isinstance(model, AtomicModel):
            self.leaves("    ", model.leaves)
        for child in model.children:
            self.model(child)

    def initial_state(self):
        self.write("Initial Model State:")
        self.model(self.root)

    def state(self):
        self.write("Model State:")
        self.model(self.root)

    def before_firing(self, entry, time):
        if self.level > 1:
            self.write("Enabling state before action firing:")
            self.leaves("  ", entry.first.enabling)
        if self.level > 0:
            self.write(f"#### Firing: {time:g}  Action: ({entry.model.number}){entry.model.name}->{entry.name}")

    def after_firing(self, entry, fired):
        if self.level > 0:
            self.write(f"#### After: ({entry.model.number}){entry.name}->{fired.name}")
        if self.level > 1:
            self.write("Affected state after firing: ")
            self.leaves("  ", fired.affected)


# ---- The XML document -----------------------------------------------------------------------------------------------


# Where the documents say that their DTD is.
DTD_ADDRESS = "http://quorva.invalid/dtd/jMSCVis_trace.dtd"


class XmlTrace:
    """Gives `write` each line. The document tells of the first batch alone."""

    def __init__(self, write, structure):
        self.write = write
        self.root = structure.root
        self.batch = -1
        self.time = 0.0
        self.used_names = {}  # name of a declared shared leaf: the model that declared it
        self.declared = []  # pairs of model and the names it declared, in the order in which they are looked through
        self.private = set()  # numbers of the activities that touch nothing shared

    def header(self):
        for line in (
            '<?xml version="1.0" encoding="utf-8" ?>',
            "<!DOCTYPE Trace",
            f'  SYSTEM "{DTD_ADDRESS}">',
            '<Trace model="Example_Quorva" generator="manually_generated" >',
            "<Comment> Purpose of this trace: demonstration </Comment>",
            "<!-- TESTING declaration of processes -->",
            "<!-- Trace file of model Example_Quorva -->",
        ):
            self.write(line)
        self.process(self.root, self.root.number)
        self.write("<Interactions>")
        self.interactions(self.root)
        self.write("</Interactions>")
        self.write("<!-- process sequence -->")
        self.write('<Sequence type="StateActionType">')

    def process(self, model, parent):
        """Declares a model and what it has; a composed one is followed by its children."""
        names = []
        atomic = isinstance(model, AtomicModel)
        self.write(f'<Process id="p{model.number}" name="{model.name}{model.number if atomic else ""}" >')
        if atomic:
            for activity in model.activities:
                if not any(leaf.name in self.used_names for leaf in activity.affected):
                    self.private.add(activity.number)
                    self.write(f'<Action id="a{activity.number}" name="{activity.name}" />')
            names = [leaf.name for leaf in model.leaves if not leaf.shared]
        else:
            for leaf in model.shared:
                declared_above = leaf.name in self.used_names and self.used_names[leaf.name] <= parent
                if leaf.shared and not declared_above:
                    self.used_names[leaf.name] = model.number
                    names.append(leaf.name)
        for name in names:
            self.write(f'<Var id="p{model.number}{name}" name="{name}" />')
        self.write("</Process>")
        for child in model.children:
            self.process(child, model.number)
        self.declared.insert(0, (model.number, names))

    def owner(self, name, limit):
        """The model that declared a shared leaf, seen from the model numbered `limit`; -1 for none."""
        return next((number for number, names in self.declared if number <= limit and name in names), -1)

    def interactions(self, model):
        for child in model.children:
            self.interactions(child)
        for activity in getattr(model, "activities", ()):
            touched = []
            for leaf in activity.affected:
                if activity.number not in self.private and leaf.name in self.used_names:
                    owner = self.owner(leaf.name, model.number)
                    if owner != -1 and owner not in touched:
                        touched.append(owner)
            if touched:
                if model.number not in touched:
                    touched.append(model.number)
                self.write(f'<Undiraction id="a{activity.number}" name="{activity.name}">')
                self.write("".join(f"<Touch>p{number}</Touch>" for number in touched) + "</Undiraction>")

    def values(self, model):
        if isinstance(model, AtomicModel):
            pairs = [(model.number, leaf) for leaf in model.leaves if not leaf.shared]
        else:
            pairs = [(self.owner(leaf.name, model.number), leaf) for leaf in model.shared if leaf.shared]
        for number, leaf in pairs:
            self.write(f'<V id="p{number}{leaf.name}" val="{leaf.read()}" />')
        for child in model.children:
            self.values(child)

    def new_batch(self):
        self.batch += 1
        if self.batch == 1:
            self.write("</Sequence>")
            self.write("</Trace>")

    def initial_state(self):
        if self.batch == 0:
            self.write("<S>")
            self.values(self.root)
            self.write("</S>")

    def state(self):
        """A document has the initial state and the firings alone."""

    def before_firing(self, _, time):
        self.time = time

    def after_firing(self, entry, fired):
        if self.batch != 0:
            return
        self.write(f'<A id="a{fired.number}" t="{self.time:g}">')
        for leaf in fired.affected:
            number = self.owner(leaf.name, entry.model.number) if leaf.shared else entry.model.number
            self.write(f'  <V id="p{number}{leaf.name}"  val="{leaf.read()}" />')
        self.write("</A>")


# ---- A run with traces ----------------------------------------------------------------------------------------------


class Traces(reference_railway.Watcher):
    """The traces of one command line: sinks in order, and a level that all of them have."""

    def __init__(self, structure, level, sinks):
        self.structure = structure
        self.level = level
        self.sinks = sinks
        self.entry = None

    def header(self):
        for sink in self.sinks:
            sink.header()

    def new_batch(self):
        for sink in self.sinks:
            sink.new_batch()

    def batch_starts(self):
        if self.level > 0:
            for sink in self.sinks:
                sink.initial_state()

    def before_firing(self, time, group):
        self.entry = entry_of(self.structure, group)
        for sink in self.sinks:
            sink.before_firing(self.entry, time)

    def after_firing(self, group, activity):
        fired = self.structure.activity(activity)
        for sink in self.sinks:
            sink.after_firing(self.entry, fired)

    def step_done(self):
        if self.level > 2:
            for sink in self.sinks:
                sink.state()

    def batch_ends(self):
        self.new_batch()


class Watchers(reference_railway.Watcher):
    """Several that watch one run."""

    def __init__(self):
        self.watchers = []

    def batch_starts(self):
        for watcher in self.watchers:
            watcher.batch_starts()

    def before_firing(self, time, group):
        for watcher in self.watchers:
            watcher.before_firing(time, group)

    def after_firing(self, group, activity):
        for watcher in self.watchers:
            watcher.after_firing(group, activity)

    def step_done(self):
        for watcher in self.watchers:
            watcher.step_done()

    def batch_ends(self):
        for watcher in self.watchers:
            watcher.batch_ends()


class FiringCount(reference_railway.Watcher):
    """How often each activity fired in the first batch."""

    def __init__(self):
        self.batch = 0
        self.fired = collections.Counter()

    def after_firing(self, group, activity):
        if self.batch == 0:
            self.fired[activity.name] += 1

    def batch_ends(self):
        self.batch += 1
