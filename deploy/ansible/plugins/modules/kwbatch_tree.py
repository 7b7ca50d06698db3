#!/usr/bin/python
"""Brings a tree of the suite into a state, with kwbatch."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: kwbatch_tree
short_description: Installs, patches, proves and removes a tree of the suite
description:
  - Brings a tree of the suite on a machine into a state. C(kwbatch) does the work there.
  - The task is C(changed) only if C(kwbatch) says that it has changed something.
  - What was interrupted is completed by the same task. A machine on which nothing is left to do is
    not changed.
author:
  - the libKWINSTUTIL developers (@kwinstutil)
options:
  target:
    description: The directory of the tree.
    type: path
    required: true
  state:
    description:
      - C(installed) - all packages of I(medium) are in the tree.
      - C(patched) - the service packs and hot fixes of I(medium) are in the tree. One that a later
        service pack of the tree replaces is left out.
      - C(committed) - no service pack waits for a commit. After that, none can be taken out.
      - C(absent) - the service packs and hot fixes of I(medium) are taken out, the last first.
        Without I(medium), the product is uninstalled.
      - C(verified) - no installed file is missing or damaged. Files that are, are put back from
        I(medium); without I(medium) the task fails.
    type: str
    choices: [installed, patched, committed, absent, verified]
    default: installed
  medium:
    description:
      - The directories of the media, in the order in which they are installed.
      - Required for I(state=installed) and I(state=patched). An empty list is refused.
    type: list
    elements: path
  commit:
    description:
      - With I(state=patched), commit each service pack when it is installed. A hot fix needs a pack
        that is committed.
    type: bool
    default: false
  answers:
    description: A file of answers on the machine, as C(kwbatch --save-answers) writes it.
    type: path
  languages:
    description:
      - Languages beside English, C(all) or C(none). A tree keeps those of its first installation.
      - Without this option, those of I(answers), or else all.
    type: list
    elements: str
    choices: [all, none, French, German, Italian, Japanese, Korean, Simplified_Chinese]
  os:
    description:
      - One operating system of the medium or the tree only.
      - The product is always uninstalled as a whole; I(os) is refused then.
    type: str
  stop:
    description: With I(state=absent), stop the programs that run from the tree before uninstalling it.
    type: bool
    default: false
  purge:
    description: With I(state=absent), delete files that the site has added, too, when uninstalling.
    type: bool
    default: false
  wait:
    description: How many seconds to wait for another C(kwbatch) that works on the tree.
    type: int
    default: 60
  executable:
    description: The program.
    type: str
    default: kwbatch
attributes:
  check_mode:
    description: Asks C(kwbatch check) or C(kwbatch uninstall --dry-run); nothing is written.
    support: full
  diff_mode:
    description: The packages, service packs, hot fixes and languages before and after.
    support: full
notes:
  - In check mode, a pack that follows a change which was not made is not checked, because C(kwbatch)
    cannot know whether it will fit.
  - A setup program of the product that fails makes the task fail, but what was installed stays.
"""

EXAMPLES = r"""
- name: Install the suite
  kwinstutil.deploy.kwbatch_tree:
    target: /opt/suite
    medium: [/srv/media/ga]
    answers: /etc/kwbatch/site.ini
    languages: [French, Japanese]

- name: Install a service pack and a hot fix above it
  kwinstutil.deploy.kwbatch_tree:
    target: /opt/suite
    state: patched
    medium: [/srv/media/sp1, /srv/media/hf1]
    commit: true

- name: Take the hot fix out again
  kwinstutil.deploy.kwbatch_tree:
    target: /opt/suite
    state: absent
    medium: [/srv/media/hf1]

- name: Prove that every file is as it was delivered
  kwinstutil.deploy.kwbatch_tree:
    target: /opt/suite
    state: verified

- name: Uninstall the suite
  kwinstutil.deploy.kwbatch_tree:
    target: /opt/suite
    state: absent
    stop: true
"""

RETURN = r"""
done:
  description: What was done, in this order.
  type: list
  elements: str
  returned: always
  sample: ["Service pack SP1 is installed in /opt/suite/aix_a, and waits for a commit."]
messages:
  description: What kwbatch said besides.
  type: list
  elements: str
  returned: always
log:
  description: The path of the log on the machine.
  type: str
  returned: when a log was written
kept:
  description: Files that were not the product's and stayed when it was uninstalled.
  type: list
  elements: str
  returned: after I(state=absent) without I(medium)
systems:
  description: What the tree holds now, as C(kwbatch status --json) shows it.
  type: list
  elements: dict
  returned: on success, except in check mode
"""

import os
import re

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.kwinstutil.deploy.plugins.module_utils.kwbatch import UNCOMMITTED, Tree, lines_of


def install(tree, media):
    for medium in media:
        if not tree.is_to_come(medium) and not tree.is_below_pack(medium):
            tree.put("install", medium, tree.result["changed"])


def patch(tree, media):
    for medium in media:
        if tree.is_to_come(medium):
            continue
        update = tree.update_on(medium)
        systems = tree.systems()
        if not update.is_superseded(systems):
            tree.put(update.word, medium, tree.result["changed"] or not systems)
        # Not another pack, which is being tried.
        if tree.module.params["commit"] and UNCOMMITTED & set(update.states(tree.systems())):
            commit(tree)


def commit(tree):
    if not tree.module.check_mode:
        tree.run("commit", tree.target)
        return
    for system in tree.systems():
        for pack in system["service_packs"]:
            if pack["state"] in UNCOMMITTED:
                tree.will_change(f"Service pack {pack['name']} would be committed.")


def take_out(tree, media):
    for medium in reversed(media):
        update = tree.update_on(medium)
        systems = tree.systems()
        states = update.states(systems)
        if not states:
            continue
        if "committed" in states:
            tree.fail(f"Service pack {update.name} is committed. It cannot be taken out.")
        if not update.is_latest(systems):
            tree.fail(f"{update.name} is not the latest update of {tree.target}. Take out the later ones first.")
        if tree.module.check_mode:
            tree.will_change(f"{update.name} would be taken out of {tree.target}.")
            continue
        tree.run("undo-" + update.word, tree.target)


def uninstall(tree):
    if tree.module.params["os"]:
        tree.fail("The product is uninstalled for all operating systems; os cannot be given.")
    options = [option for option in ("stop", "purge") if tree.module.params[option]]
    words = ["--" + option for option in options]
    if not tree.module.check_mode:
        tree.run("uninstall", tree.target, *words)
    elif tree.run("uninstall", tree.target, "--dry-run", *words)["status"] == 0:
        tree.will_change(f"{tree.target} would be uninstalled.")


def verify(tree, media):
    if not media or tree.ask("verify", tree.target)["status"] == 0:
        tree.run("verify", tree.target)
    elif tree.module.check_mode:
        tree.will_change(f"Damaged files would be put back in {tree.target}.")
    else:
        # A medium may lack what another one brings; the last word is that of verify.
        for medium in media:
            tree.note(tree.ask("repair", medium, tree.target))
        tree.run("verify", tree.target)


def lines_after(tree, before, media):
    """What is in the tree now, or, in check mode, would be."""
    params = tree.module.params
    if not tree.module.check_mode:
        tree.result["systems"] = tree.systems()
        return lines_of(tree.result["systems"])
    if not tree.result["changed"] or params["state"] == "verified":
        return before
    if params["state"] == "absent":
        names = [tree.update_on(medium).name for medium in media or []]
        return {line for line in before if media and not any(f" {name}," in line for name in names)}
    lines = set(before)
    for medium in tree.planned:
        if os.path.isdir(medium):
            lines |= lines_of(tree.systems(medium))
    # How an update from a medium is called in a tree.
    lines = {re.sub("(hot fix .*), on the medium$", r"\1, installed", line) for line in lines}
    lines = {line.replace(", on the medium", ", pending") for line in lines}
    if params["state"] == "committed" or params["commit"]:
        lines = {line.replace(", pending", ", committed") for line in lines}
    return lines


def main():
    module = AnsibleModule(
        argument_spec={
            "target": {"type": "path", "required": True},
            "state": {
                "default": "installed",
                "choices": ["installed", "patched", "committed", "absent", "verified"],
            },
            "medium": {"type": "list", "elements": "path"},
            "commit": {"type": "bool", "default": False},
            "answers": {"type": "path"},
            "languages": {
                "type": "list",
                "elements": "str",
                "choices": ["all", "none", "French", "German", "Italian", "Japanese", "Korean", "Simplified_Chinese"],
            },
            "os": {"type": "str"},
            "stop": {"type": "bool", "default": False},
            "purge": {"type": "bool", "default": False},
            "wait": {"type": "int", "default": 60},
            "executable": {"default": "kwbatch"},
        },
        required_if=[("state", "installed", ["medium"]), ("state", "patched", ["medium"])],
        supports_check_mode=True,
    )
    media = module.params["medium"]
    if media is not None and not media:
        # Or an empty variable would uninstall a product.
        module.fail_json(msg="The list of media is empty.")
    tree = Tree(module)
    before = lines_of(tree.systems())
    steps = {"installed": install, "patched": patch, "absent": take_out, "verified": verify}
    if module.params["state"] == "committed":
        commit(tree)
    elif module.params["state"] == "absent" and media is None:
        uninstall(tree)
    else:
        steps[module.params["state"]](tree, media)
    after = lines_after(tree, before, media)
    tree.result["diff"] = {
        "before": "".join(line + "\n" for line in sorted(before)),
        "after": "".join(line + "\n" for line in sorted(after)),
    }
    module.exit_json(**tree.result)


if __name__ == "__main__":
    main()
