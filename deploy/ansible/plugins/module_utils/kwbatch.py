"""A tree of the suite, as the kwbatch that works on it reports it."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json
import os

NOTHING_TO_DO = 3
UNCOMMITTED = {"pending", "being committed"}
GROUPS = (
    ("products", "product"),
    ("solutions", "solution"),
    ("sdk", "development kit"),
    ("samples", "samples"),
    ("others", "package"),
    ("languages", "language"),
)


def lines_of(systems):
    """The content of the systems of a tree or medium, a line for each thing."""
    lines = set()
    for system in systems:
        for group, kind in GROUPS:
            lines.update(f"{system['name']}: {kind} {name}" for name in system[group])
        for group, kind in (("service_packs", "service pack"), ("hot_fixes", "hot fix")):
            for update in system[group]:
                if update["state"] != "required":
                    lines.add(f"{system['name']}: {kind} {update['name']}, {update['state']}")
    return lines


class Update:
    """The service pack or hot fix that a medium brings."""

    def __init__(self, system):
        packs = system["service_packs"]
        fixes = [fix for fix in system["hot_fixes"] if fix["state"] == "on the medium"]
        self.is_hot_fix = bool(fixes)
        self.group = "hot_fixes" if fixes else "service_packs"
        self.word = "hot-fix" if fixes else "service-pack"
        self.name = (fixes or packs)[0]["name"]
        self.pack_level = packs[0]["level"]  # of a hot fix: that of the pack below it

    def states(self, systems):
        """Its states in the systems of a tree; none where it is not installed."""
        return [
            update["state"]
            for system in systems
            for update in system[self.group]
            if update["name"] == self.name
        ]

    def is_latest(self, systems):
        """Is it the last of its kind, where it is installed?"""
        groups = [[update["name"] for update in system[self.group]] for system in systems]
        return all(names[-1] == self.name for names in groups if self.name in names)

    def is_superseded(self, systems):
        """Does the tree have a later service pack everywhere?"""
        levels = [max([pack["level"] for pack in system["service_packs"]] or [0]) for system in systems]
        return bool(levels) and min(levels) > self.pack_level


class Tree:
    """A tree, and the kwbatch that works on it."""

    def __init__(self, module):
        self.module = module
        self.target = module.params["target"]
        self.result = {"changed": False, "done": [], "messages": []}
        self.planned = []  # check mode: the media that would be installed

    def fail(self, text):
        self.module.fail_json(msg=text, **self.result)

    def ask(self, command, *words):
        """Runs kwbatch, whatever its exit status. Returns its report."""
        params = self.module.params
        arguments = [params["executable"], command] + list(words) + ["--json"]
        if params["os"]:
            arguments += ["--os", params["os"]]
        if command != "tasks":
            arguments += ["--wait", str(params["wait"])]
        if params["answers"]:
            arguments += ["--answers", params["answers"]]
        if params["languages"] and command in ("install", "check"):
            arguments += ["--languages", ",".join(params["languages"])]
        status, output, errors = self.module.run_command(arguments)
        try:
            return json.loads(output)
        except ValueError:
            return self.fail(
                f"{params['executable']} {command} gave no report. It may be too old for this collection. "
                f"Exit status {status}: {errors or output}"
            )

    def note(self, report):
        """Takes over what a report says was done."""
        self.result["changed"] |= report["changed"]
        self.result["done"] += report["done"]
        self.result["messages"] += [text for text in report["messages"] if text not in report["done"]]
        for field in ("log", "kept"):
            if field in report:
                self.result[field] = report[field]

    def run(self, command, *words):
        """Runs kwbatch, which must succeed or have nothing to do. Returns its report."""
        report = self.ask(command, *words)
        self.note(report)
        if report["status"] not in (0, NOTHING_TO_DO):
            self.fail(report.get("error") or "\n".join(report["messages"]))
        return report

    def systems(self, directory=None):
        """The systems of the tree, or of a medium, which must be there."""
        report = self.ask("status", directory or self.target)
        if report["status"] not in (0, NOTHING_TO_DO) or (directory and not report["systems"]):
            self.fail(report.get("error") or "\n".join(report["messages"]))
        return report["systems"]

    def will_change(self, text):
        """Check mode: notes a change that would be made."""
        self.result["changed"] = True
        self.result["done"].append(text)

    def will_install(self, medium):
        """Check mode: the same for a medium."""
        self.planned.append(medium)
        self.will_change(f"{medium} would be installed in {self.target}.")

    def is_to_come(self, medium):
        """Check mode: is the medium not there yet, because another task would have copied it?"""
        if not self.module.check_mode or os.path.isdir(medium):
            return False
        self.module.warn(f"{medium} is not there yet, and cannot be checked.")
        self.will_install(medium)
        return True

    def is_below_pack(self, medium):
        """Is all of the medium installed, and a service pack above it not committed? kwbatch would
        refuse the medium then."""
        systems = self.systems()
        states = {pack["state"] for system in systems for pack in system["service_packs"]}
        is_complete = all(system["state"] == "complete" for system in systems)
        return bool(UNCOMMITTED & states) and is_complete and lines_of(self.systems(medium)) <= lines_of(systems)

    def put(self, command, medium, follows):
        """Installs a medium. In check mode, asks whether that would change something; what `follows`
        a change that was not made would."""
        if not self.module.check_mode:
            self.run(command, medium, self.target)
        elif follows or self.run("check", medium, self.target)["status"] == 0:
            self.will_install(medium)

    def update_on(self, medium):
        """The service pack or hot fix on a medium, which must hold one."""
        system = self.systems(medium)[0]
        if not system["service_packs"]:
            self.fail(f"{medium} holds neither a service pack nor a hot fix.")
        return Update(system)
