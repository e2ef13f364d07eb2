"""The railway computed a second time, by a program of its own.

It simulates trains and trackside with plain data, an event queue and three generators written for it, and prints what a
terminating run of the railway puts into its ASCII result file, followed by the number of actions fired. It shares no
code with the engine: when the two agree observation by observation, the rules, the order of the passes after each firing
and the stream of random numbers agree.

Usage: reference_railway.py [--batches N] [--seed S] [--generator 0|1|2] [--simtest K] [name=value ...]
       reference_railway.py --self-test
"""

import argparse

# ---- Random numbers -------------------------------------------------------------------------------------------------


def mod1(x):
    return x - int(x)


class LaggedFibonacci:
    """X(j) = (X(j-100) + X(j-37)) mod 1; D. E. Knuth, The Art of Computer Programming 2, 3.6, printing of 2002.

    The seed is not masked, and the start is not followed by a warm-up: of two blocks of 100 the first is thrown away.
    """

    LONG, SHORT = 100, 37
    PASSES = 69

    def __init__(self, seed):
        long, short = self.LONG, self.SHORT
        ulp = 2.0**-52
        work = [0.0] * (2 * long - 1)
        start = 2.0 * ulp * (seed + 2)
        for j in range(long):
            work[j] = start
            start += start
            if start >= 1.0:
                start -= 1.0 - 2 * ulp
        work[1] += ulp
        bits, passes = seed, self.PASSES
        while passes:
            for j in range(long - 1, 0, -1):  # square the polynomial
                work[2 * j] = work[j]
                work[2 * j - 1] = 0.0
            for j in range(2 * long - 2, long - 1, -1):
                work[j - (long - short)] = mod1(work[j - (long - short)] + work[j])
                work[j - long] = mod1(work[j - long] + work[j])
            if bits & 1:  # multiply it by z
                work[1 : long + 1] = work[0:long]
                work[0] = work[long]
                work[short] = mod1(work[short] + work[long])
            if bits:
                bits >>= 1
            else:
                passes -= 1
        self.window = work[short:long] + work[:short]
        self.block()
        self.pending = self.block()
        self.cursor = 0

    def block(self):
        """The next 100 values. The window moves on by as many."""
        values = list(self.window)
        series = list(self.window)
        for _ in range(self.LONG):
            series.append(mod1(series[-self.LONG] + series[-self.SHORT]))
        self.window = series[self.LONG :]
        return values

    def next(self):
        if self.cursor == self.LONG:
            self.cursor = 0
            self.pending = self.block()
        value = self.pending[self.cursor]
        self.cursor += 1
        return value


class Tausworthe:
    """Two shifts in 32 bits; the state is the last value."""

    def __init__(self, seed):
        self.state = seed

    def next(self):
        t = ((self.state << 13) ^ self.state) & 0x7FFFFFFF
        self.state = (t >> 18) ^ t
        return self.state * 4.656612875245797e-10


class MersenneTwister:
    """MT19937; M. Matsumoto, T. Nishimura, Mersenne Twister, ACM TOMACS 8(1), 1998."""

    def __init__(self, seed):
        self.words = [seed & 0xFFFFFFFF]
        for i in range(1, 624):
            last = self.words[-1]
            self.words.append((1812433253 * (last ^ (last >> 30)) + i) & 0xFFFFFFFF)
        self.index = 624

    def next_word(self):
        words = self.words
        if self.index == 624:
            for i in range(624):
                y = (words[i] & 0x80000000) | (words[(i + 1) % 624] & 0x7FFFFFFF)
                words[i] = words[(i + 397) % 624] ^ (y >> 1) ^ (0x9908B0DF if y & 1 else 0)
            self.index = 0
        y = words[self.index]
        self.index += 1
        y ^= y >> 11
        y ^= (y << 7) & 0x9D2C5680
        y ^= (y << 15) & 0xEFC60000
        return y ^ (y >> 18)

    def next(self):
        return (self.next_word() + 0.5) * 2.3283064365386963e-10


GENERATORS = (LaggedFibonacci, Tausworthe, MersenneTwister)
DEFAULT_SEED = 31415

# ---- The railway's rules --------------------------------------------------------------------------------------------

PARAMETERS = {
    "MAnetDelay": 0.5,
    "RBCprocessingTime": 1.0,
    "TPRUpdatePeriod": 5.0,
    "TPRnetDelay": 0.5,
    "integrityNotConfirmedProb": 0.0,
    "lineLength": 8000,
    "maxTrainSpeed": 80,
    "nTrains": 1,
    "netNotDeliveryProb": 0.0,
    "positionUpdatePeriod": 1.0,
    "safetyMargin": 0,
    "trainLength": 300,
}

STOP_TIMES = (99.0, 99.5, 100.0, 100.5, 101.0, 101.5, 102.0, 102.5, 103.0, 103.5, 110.0)

TRAIN_ACTIVITIES = (
    "assigningID",
    "trainExits",
    "trainArrival",
    "updatePosition",
    "TPRNetworkDelay_case1",
    "TPRNetworkDelay_case2",
    "updateTPR_case1",
    "updateTPR_case2",
    "MANetworkDelay_case1",
    "MANetworkDelay_case2",
)

# The entries that are scheduled, in order: each with its members.
TRAIN_GROUPS = (
    ("trainArrival",),
    ("updatePosition",),
    ("TPRNetworkDelay_case1", "TPRNetworkDelay_case2"),
    ("updateTPR_case1", "updateTPR_case2"),
    ("MANetworkDelay_case1", "MANetworkDelay_case2"),
    ("assigningID",),
    ("trainExits",),
)

TRACKSIDE_ACTIVITIES = ("evaluateOlderTPR", "RBCprocessing")
TRACKSIDE_GROUPS = (("RBCprocessing",), ("evaluateOlderTPR",))

REPORT_ARCS = ("TPRwaiting", "sendTPR", "TPRmsg", "trainID", "trainHeadPositions", "trainSpeeds")

AFFECTED = {
    "assigningID": ("Start", "waitForEntering", "trainID", "Count"),
    "trainExits": ("trainHasToExit", "trainMovement"),
    "trainArrival": (
        "waitForEntering",
        "trainMovement",
        "TPRwaiting",
        "trainID",
        "trainHeadPositions",
        "trainTailPositions",
        "trainMAs",
        "trainSpeeds",
    ),
    "updatePosition": (
        "trainMovement",
        "trainID",
        "trainHasToExit",
        "trainHeadPositions",
        "trainSpeeds",
        "trainTailPositions",
        "trainMAs",
    ),
    "TPRNetworkDelay_case1": ("sendTPR", "TPRtoRBC", "trainID", "TPRmsg", "TPRmessages"),
    "TPRNetworkDelay_case2": ("sendTPR", "TPRmsg"),
    "updateTPR_case1": REPORT_ARCS,
    "updateTPR_case2": REPORT_ARCS,
    "MANetworkDelay_case1": ("MAtoRBC", "trainID", "trainMAs", "MAmessages"),
    "MANetworkDelay_case2": ("MAtoRBC", "trainID", "MAmessages"),
    "evaluateOlderTPR": ("TPRtoRBC", "idle", "msgIn"),
    "RBCprocessing": (
        "msgIn",
        "MAtoRBC",
        "idle",
        "TPRmessages",
        "trackStatusAreasHeads",
        "trackStatusAreasTails",
        "MAmessages",
    ),
}

ENABLING = {
    "assigningID": ("Start",),
    "trainExits": ("trainHasToExit", "trainMovement"),
    "trainArrival": ("waitForEntering",),
    "updatePosition": ("trainMovement",),
    "TPRNetworkDelay_case1": ("sendTPR",),
    "TPRNetworkDelay_case2": ("sendTPR",),
    "updateTPR_case1": ("TPRwaiting",),
    "updateTPR_case2": ("TPRwaiting",),
    "MANetworkDelay_case1": ("MAtoRBC", "trainID", "MAmessages"),
    "MANetworkDelay_case2": ("MAtoRBC", "trainID", "MAmessages"),
    "evaluateOlderTPR": ("TPRtoRBC", "idle"),
    "RBCprocessing": ("msgIn",),
}

# What all owners of a variable of that name have in common; every other variable is its owner's own.
SHARED = {
    "Count",
    "MAmessages",
    "MAtoRBC",
    "TPRmessages",
    "TPRtoRBC",
    "arrivalTime",
    "trainHeadPositions",
    "trainMAs",
    "trainSpeeds",
    "trainTailPositions",
}
ARRAYS = {
    "MAmessages",
    "TPRmessages",
    "arrivalTime",
    "trainHeadPositions",
    "trainMAs",
    "trainSpeeds",
    "trainTailPositions",
    "trackStatusAreasHeads",
    "trackStatusAreasTails",
}
REPORT_FIELDS = ("timestamp", "position", "speed", "integrityConfirmed")
FIELDS = {"MAmessages": ("timestamp", "EoA"), "TPRmessages": REPORT_FIELDS, "TPRmsg": REPORT_FIELDS}


def truncate(x):
    """Toward zero, into 32 bits, with the ends of the range for what lies outside."""
    if x != x:
        return 0
    return int(max(-(2**31), min(2**31 - 1, x)))


def low16(x):
    return (x + 2**15) % 2**16 - 2**15


def low32(x):
    return (x + 2**31) % 2**32 - 2**31


class Train:
    """What one train keeps to itself."""

    def __init__(self):
        self.trainID = 0
        self.Start = 1
        self.waitForEntering = 0
        self.trainMovement = 0
        self.sendTPR = 0
        self.TPRwaiting = 0
        self.trainHasToExit = 0
        self.TPRmsg = dict.fromkeys(REPORT_FIELDS, 0)


class Railway:
    """Marking and rules. An activity is named by the pair of its train's number and its name; the trackside is None."""

    def __init__(self, parameters):
        self.p = parameters
        self.now = 0.0
        self.reset()

    def reset(self):
        n = self.p["nTrains"]
        self.trains = [Train() for _ in range(n)]
        self.Count = n
        self.TPRtoRBC = 0
        self.MAtoRBC = 0
        self.arrivalTime = [low16(50 * i) for i in range(n)]
        self.head = [0] * n
        self.tail = [0] * n
        self.speed = [0] * n
        self.authority = [self.p["lineLength"]] + [0] * (n - 1)
        self.reports = [dict.fromkeys(REPORT_FIELDS, 0) for _ in range(n)]
        self.answers = [{"timestamp": 0, "EoA": 0} for _ in range(n)]
        self.idle = 1
        self.msgIn = 0
        self.areaHead = [self.p["lineLength"]] + [0] * (n - 1)
        self.areaTail = [0] * n

    # Each rule is looked up by name, once, when a run is set up.

    def enabled_assigningID(self, t):
        return t.Start > 0

    def enabled_trainExits(self, t):
        return t.trainHasToExit > 0 and t.trainMovement >= 1

    def enabled_trainArrival(self, t):
        return t.waitForEntering > 0

    def enabled_updatePosition(self, t):
        return t.trainMovement > 0

    def enabled_TPRNetworkDelay(self, t):
        return t.sendTPR > 0

    def enabled_updateTPR(self, t):
        return t.TPRwaiting > 0

    def enabled_MANetworkDelay(self, t):
        return self.MAtoRBC > 0 and self.answers[t.trainID]["timestamp"] > 0

    def enabled_evaluateOlderTPR(self, _):
        return self.TPRtoRBC > 0 and self.idle >= 1

    def enabled_RBCprocessing(self, _):
        return self.msgIn > 0

    def delay_assigningID(self, _):
        return 0.0

    def delay_trainExits(self, _):
        return 0.0

    def delay_trainArrival(self, t):
        return float(self.arrivalTime[t.trainID])

    def delay_updatePosition(self, _):
        return self.p["positionUpdatePeriod"]

    def delay_TPRNetworkDelay(self, _):
        return self.p["TPRnetDelay"]

    def delay_updateTPR(self, _):
        return self.p["TPRUpdatePeriod"]

    def delay_MANetworkDelay(self, _):
        return self.p["MAnetDelay"]

    def delay_evaluateOlderTPR(self, _):
        return 0.0

    def delay_RBCprocessing(self, _):
        return self.p["RBCprocessingTime"]

    def weight(self, name):
        chance = self.p["integrityNotConfirmedProb" if name.startswith("updateTPR") else "netNotDeliveryProb"]
        return {"case1": 1 - chance, "case2": chance}.get(name.rpartition("_")[2], 1.0)

    def fire_assigningID(self, t):
        t.Start -= 1
        t.trainID = self.Count - 1
        self.Count -= 1
        t.waitForEntering += 1

    def fire_trainExits(self, t):
        t.trainHasToExit -= 1
        t.trainMovement -= 1

    def speed_for(self, distance):
        period = self.p["positionUpdatePeriod"]
        quotient = distance / period if period else float("inf") * distance
        return low16(min(truncate(quotient), self.p["maxTrainSpeed"]))

    def fire_trainArrival(self, t):
        i = t.trainID
        t.waitForEntering -= 1
        self.head[i] = 0
        self.tail[i] = -self.p["trainLength"]
        self.speed[i] = self.speed_for(self.authority[i])
        t.trainMovement += 1
        t.TPRwaiting += 1

    def fire_updatePosition(self, t):
        i = t.trainID
        t.trainMovement -= 1
        h = truncate(self.p["positionUpdatePeriod"] * self.speed[i] + self.head[i])
        self.head[i] = h
        self.tail[i] = low32(h - self.p["trainLength"])
        if self.p["lineLength"] <= h:
            if low32(h + self.p["trainLength"]) >= self.p["lineLength"]:
                t.trainHasToExit = 1
        else:
            self.speed[i] = self.speed_for(low32(self.authority[i] - h))
        t.trainMovement += 1

    def make_report(self, t, integrity):
        i = t.trainID
        t.TPRwaiting -= 1
        t.TPRmsg = {
            "timestamp": truncate(self.now),
            "position": self.head[i],
            "speed": self.speed[i],
            "integrityConfirmed": integrity,
        }
        t.sendTPR += 1
        t.TPRwaiting += 1

    def fire_updateTPR_case1(self, t):
        self.make_report(t, 1)

    def fire_updateTPR_case2(self, t):
        self.make_report(t, 0)

    def fire_TPRNetworkDelay_case1(self, t):
        t.sendTPR -= 1
        self.reports[t.trainID] = dict(t.TPRmsg)
        t.TPRmsg["timestamp"] = 0
        self.TPRtoRBC += 1

    def fire_TPRNetworkDelay_case2(self, t):
        t.sendTPR -= 1
        t.TPRmsg["timestamp"] = 0

    def fire_MANetworkDelay_case1(self, t):
        self.MAtoRBC -= 1
        self.authority[t.trainID] = self.answers[t.trainID]["EoA"]
        self.answers[t.trainID]["timestamp"] = 0

    def fire_MANetworkDelay_case2(self, t):
        self.MAtoRBC -= 1
        self.answers[t.trainID]["timestamp"] = 0

    def fire_evaluateOlderTPR(self, _):
        self.TPRtoRBC -= 1
        self.idle -= 1
        self.msgIn += 1

    def fire_RBCprocessing(self, _):
        self.msgIn -= 1
        n = self.p["nTrains"]
        k, oldest = 0, self.reports[0]["timestamp"]
        for i in range(1, n):
            stamp = self.reports[i]["timestamp"]
            if oldest == 0 or 0 < stamp < oldest:
                k, oldest = i, stamp
        report = self.reports[k]
        position = report["position"]
        report["timestamp"] = 0
        self.areaHead[k] = position
        if report["integrityConfirmed"] == 1:
            self.areaTail[k] = low32(self.p["trainLength"] + position)
            if k < n - 1:
                limit = low32(low32(position + self.p["trainLength"]) + self.p["safetyMargin"])
                self.areaHead[k + 1] = min(limit, self.p["lineLength"])
        self.answers[k] = {"timestamp": truncate(self.now), "EoA": self.areaHead[k]}
        self.MAtoRBC += 1
        self.idle += 1


# ---- Activities, groups and what a firing touches -------------------------------------------------------------------


class Activity:
    def __init__(self, railway, owner, name):
        rule = name.rpartition("_case")[0] or name
        self.railway = railway
        self.owner = owner  # number of the train, None for the trackside
        self.name = name
        self.enabled_rule = getattr(railway, "enabled_" + rule)
        self.delay_rule = getattr(railway, "delay_" + rule)
        self.fire_rule = getattr(railway, "fire_" + name)
        self.weight = railway.weight(name)
        self.was_enabled = False  # the latest answer of enabled
        self.group = None
        self.touches = []  # groups to look at after a firing, in order

    def part(self):
        return None if self.owner is None else self.railway.trains[self.owner]

    def enabled(self):
        self.was_enabled = self.enabled_rule(self.part())
        return self.was_enabled

    def enabling_changed(self):
        before = self.was_enabled
        return self.enabled() != before

    def delay(self):
        return self.delay_rule(self.part())

    def fire(self):
        self.fire_rule(self.part())

    def leaves(self, table):
        """The single values behind the activity's entries in an arc table, in order."""
        result = []
        for variable in table[self.name]:
            prefix = variable if variable in SHARED else f"{self.owner}:{variable}"
            elements = [prefix]
            if variable in ARRAYS:
                elements = [f"{prefix}.{i}" for i in range(self.railway.p["nTrains"])]
            for element in elements:
                result += [f"{element}.{field}" for field in FIELDS[variable]] if variable in FIELDS else [element]
        return result


class Group:
    """A scheduled entry: a single activity, or the cases of one."""

    RANK = 1
    WEIGHT = 1.0

    def __init__(self, members):
        self.members = members
        self.slot = None  # its place in the event queue
        for member in members:
            member.group = self

    def enabled(self):
        return any([member.enabled() for member in self.members])  # each member is asked

    def enabling_changed(self):
        return any([member.enabling_changed() for member in self.members])  # each member is asked

    def delay(self):
        return self.members[0].delay()

    def choose(self, random):
        """The member that fires. Among cases one number decides, by weight; the choosing asks for the enabling."""
        if len(self.members) == 1:
            return self.members[0]
        u = random.next()
        rows, total = [], 0.0
        for member in self.members:
            if member.enabled():
                total = total + member.weight if rows else member.weight
                rows.append((total, member))
        for row, (limit, member) in enumerate(rows):
            if limit > u * total or row == len(rows) - 1:
                member.enabled()
                return member
        raise AssertionError("a group fired with no member enabled")


def connect(activities, simtest):
    """Fills `touches` of each activity, in the order in which the named builder lists the groups."""
    affected = {activity: activity.leaves(AFFECTED) for activity in activities}
    enabling = {activity: activity.leaves(ENABLING) for activity in activities}
    if simtest == 2:
        enables = {}
        for activity in activities:
            for leaf in enabling[activity]:
                enables.setdefault(leaf, []).append(activity)
        for activity in activities:
            found = [activity.group]
            for leaf in affected[activity]:
                for other in enables.get(leaf, []):
                    if other.group not in found:
                        found.append(other.group)
            activity.touches = found[::-1]
    elif simtest in (0, 1):
        for activity in activities:
            changed = set(affected[activity])
            found = []
            for other in activities:
                if (other is activity or changed.intersection(enabling[other])) and other.group not in found:
                    found.append(other.group)
            activity.touches = found if simtest == 0 else found[::-1]


# ---- Event queue ----------------------------------------------------------------------------------------------------


class EventQueue:
    """Binary heap in an array, earliest time first, then highest rank. A group knows its slot. Among exact ties one
    number decides, by weight, in the order of a walk from the root: node, left, right."""

    def __init__(self):
        self.heap = []  # pairs of time and group

    @staticmethod
    def key(event):
        return (event[0], -event[1].RANK)

    def clear(self):
        for _, group in self.heap:
            group.slot = None
        self.heap = []

    def place(self, index, event):
        self.heap[index] = event
        event[1].slot = index

    def swap(self, i, j):
        a, b = self.heap[i], self.heap[j]
        self.place(i, b)
        self.place(j, a)

    def up(self, i):
        while i > 0:
            parent = (i - 1) // 2
            if not self.key(self.heap[i]) < self.key(self.heap[parent]):
                break
            self.swap(i, parent)
            i = parent
        return i

    def down(self, i):
        child = 2 * i + 1
        while child < len(self.heap):
            if child + 1 < len(self.heap) and self.key(self.heap[child + 1]) < self.key(self.heap[child]):
                child += 1
            if not self.key(self.heap[child]) < self.key(self.heap[i]):
                break
            self.swap(child, i)
            i = child
            child = 2 * i + 1

    def insert(self, time, group):
        self.heap.append(None)
        self.place(len(self.heap) - 1, (time, group))
        self.up(len(self.heap) - 1)

    def remove(self, group):
        index = group.slot
        group.slot = None
        last = self.heap.pop()
        if last[1] is not group:
            self.place(index, last)
            if self.up(index) == index:
                self.down(index)

    def ties(self, index=0):
        yield index
        for child in (2 * index + 1, 2 * index + 2):
            if child < len(self.heap) and self.key(self.heap[child]) == self.key(self.heap[index]):
                yield from self.ties(child)

    def earliest(self, random):
        if not self.heap:
            return None
        tied = list(self.ties())
        if len(tied) == 1:
            return self.heap[0]
        limit = random.next() * sum(self.heap[index][1].WEIGHT for index in tied)
        total = 0.0
        for index in tied:
            total += self.heap[index][1].WEIGHT
            if total > limit:
                return self.heap[index]
        raise NotImplementedError("a draw of 1.0 that falls behind the last tie")


# ---- A run ----------------------------------------------------------------------------------------------------------


class Watcher:
    """Is told of a run as it goes, each time with the marks of that moment. This one does nothing."""

    def batch_starts(self):
        """The first events are scheduled, the marks are the initial ones."""

    def before_firing(self, time, group):
        """The group is about to fire; which member it will be is not chosen yet."""

    def after_firing(self, group, activity):
        """The member has changed the marks."""

    def step_done(self):
        """The next event is known. Not called when there is none."""

    def batch_ends(self):
        """No event is left, or the next one lies behind the last stop time."""


class Simulation:
    def __init__(self, parameters, generator, seed, simtest, watcher=None):
        self.watcher = watcher or Watcher()
        self.railway = Railway(parameters)
        self.random = GENERATORS[generator](seed or DEFAULT_SEED)
        self.queue = EventQueue()
        self.fired = 0
        activities, groups = [], []
        self.activities = activities
        parts = [(train, TRAIN_ACTIVITIES, TRAIN_GROUPS) for train in range(parameters["nTrains"])]
        parts.append((None, TRACKSIDE_ACTIVITIES, TRACKSIDE_GROUPS))
        for owner, names, scheduled in parts:
            own = {name: Activity(self.railway, owner, name) for name in names}
            activities += own.values()
            groups += [Group([own[name] for name in members]) for members in scheduled]
        connect(activities, simtest)
        self.initially_enabled = [group for group in groups if group.enabled()]

    def schedule(self, time, group):
        self.queue.insert(time + group.delay(), group)

    def batch(self):
        """Times of the firings of trainExits in one batch."""
        exits = []
        self.queue.clear()
        for group in self.initially_enabled:
            group.enabled()
            group.enabled()
            self.schedule(0.0, group)
        self.watcher.batch_starts()
        event = self.queue.earliest(self.random)
        while event is not None and event[0] <= max(STOP_TIMES):
            time, group = event
            self.queue.remove(group)
            self.railway.now = time
            self.watcher.before_firing(time, group)
            activity = group.choose(self.random)
            activity.fire()
            self.watcher.after_firing(group, activity)
            self.fired += 1
            if activity.name == "trainExits":
                exits.append(time)
            for touched in activity.touches:
                if touched.slot is not None and touched.enabling_changed():
                    self.queue.remove(touched)
            for touched in activity.touches:
                if touched.enabled() and touched.slot is None:
                    self.schedule(time, touched)
            event = self.queue.earliest(self.random)
            if event is not None:
                self.watcher.step_done()
        self.watcher.batch_ends()
        self.railway.reset()
        return exits


def result_lines(exits_by_batch, report_size=1000):
    """Report by report, within one by stop time, within that by batch."""
    for first in range(0, len(exits_by_batch), report_size):
        report = exits_by_batch[first : first + report_size]
        for index, stop in enumerate(STOP_TIMES):
            for exits in report:
                yield f"{index},{sum(time <= stop for time in exits)}.0"


def self_test():
    """The generators against known values: MT19937 with seed 5489 as its authors list it, the recurrence of the lagged
    Fibonacci generator within its own stream, the Tausworthe generator by hand."""
    assert MersenneTwister(5489).next_word() == 3499211612
    twister = MersenneTwister(5489)
    assert [twister.next_word() for _ in range(10000)][-1] == 4123659995
    fibonacci = LaggedFibonacci(31415)
    stream = [fibonacci.next() for _ in range(500)]
    assert all(0.0 <= value < 1.0 for value in stream) and len(set(stream)) == 500
    assert all(stream[j] == mod1(stream[j - 100] + stream[j - 37]) for j in range(100, 500))
    assert Tausworthe(1).next() == 8193 * 4.656612875245797e-10


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--batches", type=int, default=1)
    parser.add_argument("--seed", type=int, default=DEFAULT_SEED)
    parser.add_argument("--generator", type=int, default=0)
    parser.add_argument("--simtest", type=int, default=2)
    parser.add_argument("--self-test", action="store_true")
    parser.add_argument("overrides", nargs="*", help="name=value")
    options = parser.parse_intermixed_args()
    if options.self_test:
        self_test()
        return
    parameters = dict(PARAMETERS)
    for override in options.overrides:
        name, _, value = override.partition("=")
        parameters[name] = type(PARAMETERS[name])(value)
    simulation = Simulation(parameters, options.generator, options.seed, options.simtest)
    exits_by_batch = [simulation.batch() for _ in range(options.batches)]
    for line in result_lines(exits_by_batch):
        print(line)
    print(f"Actions fired: {simulation.fired}")


if __name__ == "__main__":
    main()
