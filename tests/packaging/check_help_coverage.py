#!/usr/bin/env python3
"""Keeps the manual and the shell completions in step with the tool: every
command that `timeline-convert --help` lists, every option (short and long)
of every command's --help and every value an option takes must appear in the
manual and be offered by the bash, zsh and fish completions. The bash and
fish completions are run in their shells; the zsh one is read command by
command (its case branches) and checked by `zsh -n`. Each missing entry is
reported with the file to add it to.

Usage: check_help_coverage.py TOOL SOURCE_DIR [BASH] [ZSH] [FISH]
(a shell given as "" is skipped)
"""
import re
import subprocess
import sys

tool, source_dir = sys.argv[1:3]
bash, zsh, fish = (sys.argv[3:6] + ["", "", ""])[:3]
tools_dir = f"{source_dir}/tools"
manual_path = f"{tools_dir}/timeline-convert.1"
bash_path = f"{tools_dir}/timeline-convert.bash-completion"
zsh_path = f"{tools_dir}/timeline-convert.zsh-completion"
fish_path = f"{tools_dir}/timeline-convert.fish-completion"


def help_of(*words):
    return subprocess.run([tool, *words, "--help"], capture_output=True, text=True,
                          check=True).stdout


def options_of(help_text):
    """{option: [values]} of the Options section: -o and --output both listed."""
    section = help_text.split("Options:", 1)[1] if "Options:" in help_text else ""
    options = {}
    for line in section.splitlines():
        match = re.match(r"\s+((?:-{1,2}[A-Za-z][\w-]*,?)+)(?:\s+\S*?:\{([^}]*)\})?", line)
        if match:
            values = match.group(2).split(",") if match.group(2) else []
            for name in match.group(1).rstrip(",").split(","):
                options[name] = values
    return options


top_help = help_of()
commands = re.findall(r"^  ([a-z][a-z-]*)\s", top_help.split("Subcommands:", 1)[1], re.M)
# None stands for the command line before a command.
expected = {None: options_of(top_help)}
for command in commands:
    expected[command] = options_of(help_of(command))

problems = []


def need(where, present, what, command):
    if not present:
        context = f"the {command} command" if command else "the program itself (no command)"
        problems.append(f"{where}: add {what}, for {context}")


# The manual: a synopsis line per command, every option and value somewhere.
with open(manual_path) as manual_file:
    # Plain text: roff's escaped hyphens and font changes out.
    manual = re.sub(r"\\f[BIRP]", " ", manual_file.read().replace("\\-", "-"))
for command, options in expected.items():
    if command:
        need(manual_path, f".B timeline-convert {command}" in manual, "(its synopsis line)",
             command)
    for option, values in options.items():
        need(manual_path, re.search(rf"(?<![\w-]){re.escape(option)}(?![\w-])", manual), option,
             command)
        for value in values:
            need(manual_path, re.search(rf"\b{re.escape(value)}\b", manual),
                 f"the value {value} of {option}", command)


def offered(shell, script, words):
    """The candidates a completion offers after the words typed so far."""
    if shell == "bash":
        code = (f'source "{script}"; COMP_WORDS=({" ".join(words)}); '
                f'COMP_CWORD=$(( ${{#COMP_WORDS[@]}} - 1 )); _timeline_convert; '
                'printf "%s\\n" "${COMPREPLY[@]}"')
        quoted = [f'"{w}"' for w in words]
        code = code.replace(" ".join(words), " ".join(quoted))
        output = subprocess.run([bash, "--norc", "-c", code], capture_output=True, text=True,
                                check=True).stdout
    else:
        line = " ".join(words)
        output = subprocess.run([fish, "-N", "-c", f'source "{script}"; complete -C"{line}"'],
                                capture_output=True, text=True, check=True).stdout
    return {entry.split("\t")[0] for entry in output.splitlines()}


for shell, script in (("bash", bash_path), ("fish", fish_path)):
    if not (bash if shell == "bash" else fish):
        continue
    need(script, set(commands) <= offered(shell, script, ["timeline-convert", ""]),
         "every command: " + " ".join(commands), None)
    for command, options in expected.items():
        typed = ["timeline-convert"] + ([command] if command else [])
        dash_offers = offered(shell, script, typed + ["-"])
        for option, values in options.items():
            need(script, option in dash_offers or option in offered(shell, script, typed + [option]),
                 option, command)
            if values:
                value_offers = offered(shell, script, typed + [option, ""])
                for value in values:
                    need(script, value in value_offers, f"the value {value} after {option}",
                         command)

if zsh:
    subprocess.run([zsh, "-n", zsh_path], check=True)
    with open(zsh_path) as zsh_file:
        text = zsh_file.read()
    # Options of every command come before `case $line[1]`, a command's own in
    # its branch; the top level's before the `(command)` state.
    common = text.split("case $line[1]", 1)[0].split("(argument)", 1)[-1]
    top = text.split("case $state", 1)[0]
    for command, options in expected.items():
        if command:
            need(zsh_path, re.search(rf"'{command}:", text), "(in the commands array)", command)
            branch = re.search(rf"\({command}\)\n(.*?);;", text, re.S)
            scope = common + (branch.group(1) if branch else "")
        else:
            scope = top
        for option, values in options.items():
            need(zsh_path, re.search(rf"(?<![\w-]){re.escape(option)}(?![\w-])", scope), option,
                 command)
            for value in values:
                need(zsh_path, re.search(rf"\b{re.escape(value)}\b", scope),
                     f"the value {value} of {option}", command)

if problems:
    sys.exit("The manual or a completion misses what --help shows:\n  " + "\n  ".join(problems))
