"""One short run of the railway, worked out by hand: its trace as text and as an XML document, line by line.

Usage: worked_traces.py RAILWAY

The railway, and reference_traces.py beside it, must write exactly the lines below.

The run
=======
One train on the line of 8000, one batch, with overrides that leave eight firings:

  positionUpdatePeriod=60  the train moves at 60; 120 lies behind the last stop time, 110
  TPRUpdatePeriod=100      the train reports at 100; 200 lies behind the last stop time
  netNotDeliveryProb=0.5   the network loses every other message
  -r 1 -s 512              the Tausworthe generator, started with 512

  time   firing                  what it does
  0      assigningID             the train takes the identity 0, the only one
  0      trainArrival            arrivalTime.0 is 0. The head stands at 0, the tail at 0 - 300. The authority of 8000
                                 gives 8000 / 60 = 133, of which the highest speed leaves 80
  60     updatePosition          the head moves by 60 * 80 to 4800, the tail to 4800 - 300 = 4500. Of the authority 3200
                                 are left: the new speed is 3200 / 60 = 53
  100    updateTPR_case1         a report: made at 100, head at 4800, speed 53, integrity confirmed
  100.5  TPRNetworkDelay_case1   after 0.5 the report arrives
  100.5  evaluateOlderTPR        at once the trackside takes it up
  101.5  RBCprocessing           after 1 it has been processed: the area of the train has its head at 4800 and its tail
                                 at 300 + 4800 = 5100; the answer, made at 101 (whole units), ends the authority at 4800
  102    MANetworkDelay_case2    after 0.5 the answer is lost: the train keeps the authority of 8000

No two events are ever pending for one time, so that numbers are drawn for cases alone, one for each firing of a group
of cases: updateTPRGroup, TPRNetworkDelayGroup and MANetworkDelayGroup. The generator goes from its state x, 512 = 2^9
at first, to x' = t xor (t >> 18) with t = ((x << 13) xor x) mod 2^31, and gives the number x' / (2^31 - 1):

  t                           t >> 18      x'                          number
  2^22 + 2^9                  2^4          2^22 + 2^9 + 2^4            0.00195  case 1, which has all the weight
  2^17 + 2^9 + 2^4            0            2^17 + 2^9 + 2^4            0.00006  below 0.5: case 1, the report arrives
  2^30 + 2^22 + 2^9 + 2^4     2^12 + 2^4   2^30 + 2^22 + 2^12 + 2^9    0.50196  above 0.5: case 2, the answer is lost

Numbers
=======
Models count from 1 in the order in which they are built: the reward model is 1 and appears nowhere, the join is 2, the
fleet 3, the train 4, the trackside 5. Activities and groups count from 0 together: 0 and 1 are markers of the reward
model, 2 and 3 belong to the join and the fleet, the ten activities of the train are 4 to 13, its six groups 14 to 19,
and the trackside's activities are 20 and 21:

  4 assigningID   7 updatePosition         10 updateTPR_case1       13 MANetworkDelay_case2
  5 trainExits    8 TPRNetworkDelay_case1  11 updateTPR_case2       20 evaluateOlderTPR
  6 trainArrival  9 TPRNetworkDelay_case2  12 MANetworkDelay_case1  21 RBCprocessing
"""

import os
import subprocess
import sys
import tempfile

import reference_railway
import reference_traces
from compare_traces import difference

WORDS = ["-r", "1", "-s", "512", "-N", "1", "-m", "-x", "-l", "2", "-f", "worked"]
OVERRIDES = "d:positionUpdatePeriod:60:d:TPRUpdatePeriod:100:d:netNotDeliveryProb:0.5"

TEXT = [
    # The header, at every level: 38 stars, two tabulators and a word, 38 stars.
    "**************************************",
    "\t\tTRACE",
    "**************************************",
    # One such line before the first batch, and one at the end of each.
    "##### NEW BATCH #####",
    # From level 1 on: the marks that the batch begins with, model by model, the composed ones without any.
    "Initial Model State:",
    "  Model: (2)join",
    "  Model: (3)fleet",
    # The 18 variables of the train in its own order, shared or not; an array by index, a structure by field.
    "  Model: (4)train",
    "    trainID = 0",
    "    Start = 1",
    "    Count = 1",  # the number of trains
    "    waitForEntering = 0",
    "    trainMovement = 0",
    "    sendTPR = 0",
    "    TPRtoRBC = 0",
    "    MAtoRBC = 0",
    "    TPRwaiting = 0",
    "    trainHasToExit = 0",
    "    arrivalTime.0 = 0",  # 50 times 0
    "    trainHeadPositions.0 = 0",
    "    trainTailPositions.0 = 0",
    "    trainSpeeds.0 = 0",
    "    TPRmessages.0.timestamp = 0",
    "    TPRmessages.0.position = 0",
    "    TPRmessages.0.speed = 0",
    "    TPRmessages.0.integrityConfirmed = 0",
    "    trainMAs.0 = 8000",  # the first train has the whole line
    "    TPRmsg.timestamp = 0",
    "    TPRmsg.position = 0",
    "    TPRmsg.speed = 0",
    "    TPRmsg.integrityConfirmed = 0",
    "    MAmessages.0.timestamp = 0",
    "    MAmessages.0.EoA = 0",
    # The 8 variables of the trackside.
    "  Model: (5)trackside",
    "    TPRtoRBC = 0",
    "    MAtoRBC = 0",
    "    idle = 1",
    "    msgIn = 0",
    "    TPRmessages.0.timestamp = 0",
    "    TPRmessages.0.position = 0",
    "    TPRmessages.0.speed = 0",
    "    TPRmessages.0.integrityConfirmed = 0",
    "    trackStatusAreasHeads.0 = 8000",  # the first area reaches to the end of the line
    "    trackStatusAreasTails.0 = 0",
    "    MAmessages.0.timestamp = 0",
    "    MAmessages.0.EoA = 0",
    # First firing. Level 2 adds what enables it, before it fires ...
    "Enabling state before action firing:",
    "  Start = 1",
    "#### Firing: 0  Action: (4)train->assigningID",
    "#### After: (4)assigningID->assigningID",
    # ... and what it may have changed, after it, in the order of the activity's arcs. The line ends with a blank.
    "Affected state after firing: ",
    "  Start = 0",
    "  waitForEntering = 1",
    "  trainID = 0",
    "  Count = 0",  # no identity is left
    # The train enters.
    "Enabling state before action firing:",
    "  waitForEntering = 1",
    "#### Firing: 0  Action: (4)train->trainArrival",
    "#### After: (4)trainArrival->trainArrival",
    "Affected state after firing: ",
    "  waitForEntering = 0",
    "  trainMovement = 1",
    "  TPRwaiting = 1",  # from now on the time of its reports runs
    "  trainID = 0",  # only read: the lists hold what a firing may touch
    "  trainHeadPositions.0 = 0",
    "  trainTailPositions.0 = -300",
    "  trainMAs.0 = 8000",
    "  trainSpeeds.0 = 80",
    # The one move.
    "Enabling state before action firing:",
    "  trainMovement = 1",
    "#### Firing: 60  Action: (4)train->updatePosition",
    "#### After: (4)updatePosition->updatePosition",
    "Affected state after firing: ",
    "  trainMovement = 1",  # taken and given back
    "  trainID = 0",
    "  trainHasToExit = 0",
    "  trainHeadPositions.0 = 4800",
    "  trainSpeeds.0 = 53",
    "  trainTailPositions.0 = 4500",
    "  trainMAs.0 = 8000",
    # The one report. What fires is a group: it stands in front under its own name, its first member tells what enables
    # it, and the line after the firing tells which member it was, and that member's variables follow.
    "Enabling state before action firing:",
    "  TPRwaiting = 1",
    "#### Firing: 100  Action: (4)train->updateTPRGroup",
    "#### After: (4)updateTPRGroup->updateTPR_case1",
    "Affected state after firing: ",
    "  TPRwaiting = 1",  # taken and given back
    "  sendTPR = 1",
    "  TPRmsg.timestamp = 100",
    "  TPRmsg.position = 4800",
    "  TPRmsg.speed = 53",
    "  TPRmsg.integrityConfirmed = 1",
    "  trainID = 0",
    "  trainHeadPositions.0 = 4800",
    "  trainSpeeds.0 = 53",
    # It arrives: TPRmsg is copied, and its time set back to 0.
    "Enabling state before action firing:",
    "  sendTPR = 1",
    "#### Firing: 100.5  Action: (4)train->TPRNetworkDelayGroup",
    "#### After: (4)TPRNetworkDelayGroup->TPRNetworkDelay_case1",
    "Affected state after firing: ",
    "  sendTPR = 0",
    "  TPRtoRBC = 1",
    "  trainID = 0",
    "  TPRmsg.timestamp = 0",
    "  TPRmsg.position = 4800",
    "  TPRmsg.speed = 53",
    "  TPRmsg.integrityConfirmed = 1",
    "  TPRmessages.0.timestamp = 100",
    "  TPRmessages.0.position = 4800",
    "  TPRmessages.0.speed = 53",
    "  TPRmessages.0.integrityConfirmed = 1",
    # The trackside, which is free, takes it up.
    "Enabling state before action firing:",
    "  TPRtoRBC = 1",
    "  idle = 1",
    "#### Firing: 100.5  Action: (5)trackside->evaluateOlderTPR",
    "#### After: (5)evaluateOlderTPR->evaluateOlderTPR",
    "Affected state after firing: ",
    "  TPRtoRBC = 0",
    "  idle = 0",
    "  msgIn = 1",
    # It answers. There is no next train whose area would change.
    "Enabling state before action firing:",
    "  msgIn = 1",
    "#### Firing: 101.5  Action: (5)trackside->RBCprocessing",
    "#### After: (5)RBCprocessing->RBCprocessing",
    "Affected state after firing: ",
    "  msgIn = 0",
    "  MAtoRBC = 1",
    "  idle = 1",
    "  TPRmessages.0.timestamp = 0",  # the report is used up
    "  TPRmessages.0.position = 4800",
    "  TPRmessages.0.speed = 53",
    "  TPRmessages.0.integrityConfirmed = 1",
    "  trackStatusAreasHeads.0 = 4800",
    "  trackStatusAreasTails.0 = 5100",
    "  MAmessages.0.timestamp = 101",  # 101.5 without its fraction
    "  MAmessages.0.EoA = 4800",
    # The authority is lost: the second case, which does not touch trainMAs.
    "Enabling state before action firing:",
    "  MAtoRBC = 1",
    "  trainID = 0",
    "  MAmessages.0.timestamp = 101",
    "  MAmessages.0.EoA = 4800",
    "#### Firing: 102  Action: (4)train->MANetworkDelayGroup",
    "#### After: (4)MANetworkDelayGroup->MANetworkDelay_case2",
    "Affected state after firing: ",
    "  MAtoRBC = 0",
    "  trainID = 0",
    "  MAmessages.0.timestamp = 0",
    "  MAmessages.0.EoA = 4800",
    # The next event would be at 120: the batch is over.
    "##### NEW BATCH #####",
]

DOCUMENT = [
    # The head.
    '<?xml version="1.0" encoding="utf-8" ?>',
    "<!DOCTYPE Trace",
    '  SYSTEM "http://quorva.invalid/dtd/jMSCVis_trace.dtd">',
    '<Trace model="Example_Quorva" generator="manually_generated" >',
    "<Comment> Purpose of this trace: demonstration </Comment>",
    "<!-- TESTING declaration of processes -->",
    "<!-- Trace file of model Example_Quorva -->",
    # The join, whose name stands alone, declares its four shared variables.
    '<Process id="p2" name="join" >',
    '<Var id="p2MAmessages.0.timestamp" name="MAmessages.0.timestamp" />',
    '<Var id="p2MAmessages.0.EoA" name="MAmessages.0.EoA" />',
    '<Var id="p2MAtoRBC" name="MAtoRBC" />',
    '<Var id="p2TPRmessages.0.timestamp" name="TPRmessages.0.timestamp" />',
    '<Var id="p2TPRmessages.0.position" name="TPRmessages.0.position" />',
    '<Var id="p2TPRmessages.0.speed" name="TPRmessages.0.speed" />',
    '<Var id="p2TPRmessages.0.integrityConfirmed" name="TPRmessages.0.integrityConfirmed" />',
    '<Var id="p2TPRtoRBC" name="TPRtoRBC" />',
    "</Process>",
    # Of the fleet's ten shared variables the join has declared four: six are left.
    '<Process id="p3" name="fleet" >',
    '<Var id="p3Count" name="Count" />',
    '<Var id="p3arrivalTime.0" name="arrivalTime.0" />',
    '<Var id="p3trainHeadPositions.0" name="trainHeadPositions.0" />',
    '<Var id="p3trainMAs.0" name="trainMAs.0" />',
    '<Var id="p3trainSpeeds.0" name="trainSpeeds.0" />',
    '<Var id="p3trainTailPositions.0" name="trainTailPositions.0" />',
    "</Process>",
    # The name of the train has its number behind it. First the activities none of whose affected variables is shared:
    # the exit, and the loss of a report, which touches sendTPR and TPRmsg. Then the variables that are the train's own.
    '<Process id="p4" name="train4" >',
    '<Action id="a5" name="trainExits" />',
    '<Action id="a9" name="TPRNetworkDelay_case2" />',
    '<Var id="p4trainID" name="trainID" />',
    '<Var id="p4Start" name="Start" />',
    '<Var id="p4waitForEntering" name="waitForEntering" />',
    '<Var id="p4trainMovement" name="trainMovement" />',
    '<Var id="p4sendTPR" name="sendTPR" />',
    '<Var id="p4TPRwaiting" name="TPRwaiting" />',
    '<Var id="p4trainHasToExit" name="trainHasToExit" />',
    '<Var id="p4TPRmsg.timestamp" name="TPRmsg.timestamp" />',
    '<Var id="p4TPRmsg.position" name="TPRmsg.position" />',
    '<Var id="p4TPRmsg.speed" name="TPRmsg.speed" />',
    '<Var id="p4TPRmsg.integrityConfirmed" name="TPRmsg.integrityConfirmed" />',
    "</Process>",
    # Both activities of the trackside touch shared variables, and it has four of its own.
    '<Process id="p5" name="trackside5" >',
    '<Var id="p5idle" name="idle" />',
    '<Var id="p5msgIn" name="msgIn" />',
    '<Var id="p5trackStatusAreasHeads.0" name="trackStatusAreasHeads.0" />',
    '<Var id="p5trackStatusAreasTails.0" name="trackStatusAreasTails.0" />',
    "</Process>",
    # The other activities, each with the processes that it touches: those that declared its shared variables, in the
    # order of its affected variables, and its own last.
    "<Interactions>",
    '<Undiraction id="a4" name="assigningID">',  # Count is the fleet's
    "<Touch>p3</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a6" name="trainArrival">',  # positions, authorities and speeds are the fleet's
    "<Touch>p3</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a7" name="updatePosition">',
    "<Touch>p3</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a8" name="TPRNetworkDelay_case1">',  # TPRtoRBC and TPRmessages are the join's
    "<Touch>p2</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a10" name="updateTPR_case1">',  # reads the position and the speed, which are the fleet's
    "<Touch>p3</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a11" name="updateTPR_case2">',
    "<Touch>p3</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a12" name="MANetworkDelay_case1">',  # MAtoRBC, the join's, then trainMAs, the fleet's
    "<Touch>p2</Touch><Touch>p3</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a13" name="MANetworkDelay_case2">',  # what is lost never gets to trainMAs
    "<Touch>p2</Touch><Touch>p4</Touch></Undiraction>",
    '<Undiraction id="a20" name="evaluateOlderTPR">',
    "<Touch>p2</Touch><Touch>p5</Touch></Undiraction>",
    '<Undiraction id="a21" name="RBCprocessing">',
    "<Touch>p2</Touch><Touch>p5</Touch></Undiraction>",
    "</Interactions>",
    # The run.
    "<!-- process sequence -->",
    '<Sequence type="StateActionType">',
    # The initial marks, once, since the level is 1 or more. The join's four variables ...
    "<S>",
    '<V id="p2MAmessages.0.timestamp" val="0" />',
    '<V id="p2MAmessages.0.EoA" val="0" />',
    '<V id="p2MAtoRBC" val="0" />',
    '<V id="p2TPRmessages.0.timestamp" val="0" />',
    '<V id="p2TPRmessages.0.position" val="0" />',
    '<V id="p2TPRmessages.0.speed" val="0" />',
    '<V id="p2TPRmessages.0.integrityConfirmed" val="0" />',
    '<V id="p2TPRtoRBC" val="0" />',
    # ... all ten of the fleet, the join's four once more, and under the join's number ...
    '<V id="p3Count" val="1" />',
    '<V id="p2MAmessages.0.timestamp" val="0" />',
    '<V id="p2MAmessages.0.EoA" val="0" />',
    '<V id="p2MAtoRBC" val="0" />',
    '<V id="p2TPRmessages.0.timestamp" val="0" />',
    '<V id="p2TPRmessages.0.position" val="0" />',
    '<V id="p2TPRmessages.0.speed" val="0" />',
    '<V id="p2TPRmessages.0.integrityConfirmed" val="0" />',
    '<V id="p2TPRtoRBC" val="0" />',
    '<V id="p3arrivalTime.0" val="0" />',
    '<V id="p3trainHeadPositions.0" val="0" />',
    '<V id="p3trainMAs.0" val="8000" />',
    '<V id="p3trainSpeeds.0" val="0" />',
    '<V id="p3trainTailPositions.0" val="0" />',
    # ... and what the train and the trackside have for themselves.
    '<V id="p4trainID" val="0" />',
    '<V id="p4Start" val="1" />',
    '<V id="p4waitForEntering" val="0" />',
    '<V id="p4trainMovement" val="0" />',
    '<V id="p4sendTPR" val="0" />',
    '<V id="p4TPRwaiting" val="0" />',
    '<V id="p4trainHasToExit" val="0" />',
    '<V id="p4TPRmsg.timestamp" val="0" />',
    '<V id="p4TPRmsg.position" val="0" />',
    '<V id="p4TPRmsg.speed" val="0" />',
    '<V id="p4TPRmsg.integrityConfirmed" val="0" />',
    '<V id="p5idle" val="1" />',
    '<V id="p5msgIn" val="0" />',
    '<V id="p5trackStatusAreasHeads.0" val="8000" />',
    '<V id="p5trackStatusAreasTails.0" val="0" />',
    "</S>",
    # The firings, each under the number of the activity that fired, never a group's, with what it may have changed: the
    # same values in the same order as in the text. A shared variable has the number of the process that declared it.
    '<A id="a4" t="0">',
    '  <V id="p4Start"  val="0" />',
    '  <V id="p4waitForEntering"  val="1" />',
    '  <V id="p4trainID"  val="0" />',
    '  <V id="p3Count"  val="0" />',
    "</A>",
    '<A id="a6" t="0">',
    '  <V id="p4waitForEntering"  val="0" />',
    '  <V id="p4trainMovement"  val="1" />',
    '  <V id="p4TPRwaiting"  val="1" />',
    '  <V id="p4trainID"  val="0" />',
    '  <V id="p3trainHeadPositions.0"  val="0" />',
    '  <V id="p3trainTailPositions.0"  val="-300" />',
    '  <V id="p3trainMAs.0"  val="8000" />',
    '  <V id="p3trainSpeeds.0"  val="80" />',
    "</A>",
    '<A id="a7" t="60">',
    '  <V id="p4trainMovement"  val="1" />',
    '  <V id="p4trainID"  val="0" />',
    '  <V id="p4trainHasToExit"  val="0" />',
    '  <V id="p3trainHeadPositions.0"  val="4800" />',
    '  <V id="p3trainSpeeds.0"  val="53" />',
    '  <V id="p3trainTailPositions.0"  val="4500" />',
    '  <V id="p3trainMAs.0"  val="8000" />',
    "</A>",
    '<A id="a10" t="100">',
    '  <V id="p4TPRwaiting"  val="1" />',
    '  <V id="p4sendTPR"  val="1" />',
    '  <V id="p4TPRmsg.timestamp"  val="100" />',
    '  <V id="p4TPRmsg.position"  val="4800" />',
    '  <V id="p4TPRmsg.speed"  val="53" />',
    '  <V id="p4TPRmsg.integrityConfirmed"  val="1" />',
    '  <V id="p4trainID"  val="0" />',
    '  <V id="p3trainHeadPositions.0"  val="4800" />',
    '  <V id="p3trainSpeeds.0"  val="53" />',
    "</A>",
    '<A id="a8" t="100.5">',
    '  <V id="p4sendTPR"  val="0" />',
    '  <V id="p2TPRtoRBC"  val="1" />',
    '  <V id="p4trainID"  val="0" />',
    '  <V id="p4TPRmsg.timestamp"  val="0" />',
    '  <V id="p4TPRmsg.position"  val="4800" />',
    '  <V id="p4TPRmsg.speed"  val="53" />',
    '  <V id="p4TPRmsg.integrityConfirmed"  val="1" />',
    '  <V id="p2TPRmessages.0.timestamp"  val="100" />',
    '  <V id="p2TPRmessages.0.position"  val="4800" />',
    '  <V id="p2TPRmessages.0.speed"  val="53" />',
    '  <V id="p2TPRmessages.0.integrityConfirmed"  val="1" />',
    "</A>",
    '<A id="a20" t="100.5">',
    '  <V id="p2TPRtoRBC"  val="0" />',
    '  <V id="p5idle"  val="0" />',
    '  <V id="p5msgIn"  val="1" />',
    "</A>",
    '<A id="a21" t="101.5">',
    '  <V id="p5msgIn"  val="0" />',
    '  <V id="p2MAtoRBC"  val="1" />',
    '  <V id="p5idle"  val="1" />',
    '  <V id="p2TPRmessages.0.timestamp"  val="0" />',
    '  <V id="p2TPRmessages.0.position"  val="4800" />',
    '  <V id="p2TPRmessages.0.speed"  val="53" />',
    '  <V id="p2TPRmessages.0.integrityConfirmed"  val="1" />',
    '  <V id="p5trackStatusAreasHeads.0"  val="4800" />',
    '  <V id="p5trackStatusAreasTails.0"  val="5100" />',
    '  <V id="p2MAmessages.0.timestamp"  val="101" />',
    '  <V id="p2MAmessages.0.EoA"  val="4800" />',
    "</A>",
    # The lost authority: the second case, a13, and no trainMAs.
    '<A id="a13" t="102">',
    '  <V id="p2MAtoRBC"  val="0" />',
    '  <V id="p4trainID"  val="0" />',
    '  <V id="p2MAmessages.0.timestamp"  val="0" />',
    '  <V id="p2MAmessages.0.EoA"  val="4800" />',
    "</A>",
    # The batch is over, and the document with it.
    "</Sequence>",
    "</Trace>",
]


def reference_lines():
    """The two traces as reference_traces.py writes them."""
    text, document = [], []
    parameters = dict(reference_railway.PARAMETERS)
    parameters.update(positionUpdatePeriod=60.0, TPRUpdatePeriod=100.0, netNotDeliveryProb=0.5)
    watchers = reference_traces.Watchers()
    run = reference_railway.Simulation(parameters, generator=1, seed=512, simtest=2, watcher=watchers)
    structure = reference_traces.Structure(run.railway)
    sinks = [
        reference_traces.TextTrace(text.append, 2, structure),
        reference_traces.XmlTrace(document.append, structure),
    ]
    traces = reference_traces.Traces(structure, 2, sinks)
    watchers.watchers = [traces]
    traces.header()
    traces.new_batch()
    run.batch()
    return text, document


def railway_files(program):
    """The bytes of the two files that the railway writes."""
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, SIMTEST="2")
        command = [program] + WORDS + ["-O", OVERRIDES]
        subprocess.run(command, cwd=folder, env=environment, capture_output=True, check=True)
        contents = []
        for name in ("worked.txt", "worked.xml"):
            with open(os.path.join(folder, name), "rb") as file:
                contents.append(file.read())
    return contents


def main():
    program = sys.argv[1]
    worked = ["".join(line + "\n" for line in lines).encode("ascii") for lines in (TEXT, DOCUMENT)]
    reference = ["".join(line + "\n" for line in lines).encode("ascii") for lines in reference_lines()]
    faults = []
    for author, contents in (("the reference", reference), ("the railway", railway_files(program))):
        for name, expected, found in zip(("text", "XML document"), worked, contents):
            fault = difference(expected, found)
            if fault:
                faults.append(f"{name} of {author}: {fault}")
    if faults:
        sys.exit("\n".join(faults))
    print(f"{len(TEXT)} lines of text and {len(DOCUMENT)} lines of XML agree")


if __name__ == "__main__":
    main()
