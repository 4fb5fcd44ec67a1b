#!/usr/bin/env python3
"""Keeps the manual and the shell completions in step with the tool: every
command that `timeline-convert --help` lists, every option (short and long)
of every command's --help and every value an option takes must appear in the
manual and be offered by the bash, zsh and fish completions, each run in its
own shell (zsh's through a pseudo-terminal, complete_zsh.zsh). Each missing
entry is reported with the file to add it to.

Usage: check_help_coverage.py TOOL SOURCE_DIR [BASH] [ZSH] [FISH]
(a shell given as "" is skipped)
"""
import re
import subprocess
import sys
import tempfile

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


def offered(shell, script, queries):
    """For each query (the words typed after the program's name, the last one
    being completed), the candidates the completion offers."""
    if shell == "zsh":
        with tempfile.TemporaryDirectory() as work:
            output = subprocess.run(
                [zsh, "-f", f"{source_dir}/tests/packaging/complete_zsh.zsh", script, work,
                 *(" ".join(query) for query in queries)],
                capture_output=True, text=True, check=True, timeout=120).stdout
        blocks = output.split("@@\n")[:len(queries)]
        return [set(block.split()) for block in blocks]
    results = []
    for query in queries:
        words = ["timeline-convert", *query]
        if shell == "bash":
            array = " ".join(f"'{word}'" for word in words)
            code = (f'source "{script}"; COMP_WORDS=({array}); COMP_CWORD={len(words) - 1}; '
                    '_timeline_convert; printf "%s\\n" "${COMPREPLY[@]}"')
            command = [bash, "--norc", "-c", code]
        else:
            command = [fish, "-N", "-c", f'source "{script}"; complete -C"{" ".join(words)}"']
        output = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        results.append({entry.split("\t")[0] for entry in output.splitlines()})
    return results


# What each completion must offer: the commands on an empty line; after a
# command (or none) and "-", its options (or, for an option that dash does not
# list, after the option itself); after an option taking a value, its values.
for shell, program, script in (("bash", bash, bash_path), ("zsh", zsh, zsh_path),
                               ("fish", fish, fish_path)):
    if not program:
        continue
    checks = [(None, " ".join(commands), set(commands), [""])]
    for command, options in expected.items():
        typed = [command] if command else []
        checks.append((command, None, None, typed + ["-"]))
        for option, values in options.items():
            checks.append((command, option, {option}, typed + [option]))
            if values:
                checks.append((command, f"{', '.join(values)} after {option}", set(values),
                               typed + [option, ""]))
    results = offered(shell, script, [query for _, _, _, query in checks])
    dash_offers = {}
    for (command, what, wanted, query), found in zip(checks, results):
        if what is None:
            dash_offers[command] = found
        elif query[-1] == what:
            need(script, what in found or what in dash_offers[command], what, command)
        else:
            need(script, wanted <= found, what, command)

if problems:
    sys.exit("The manual or a completion misses what --help shows:\n  " + "\n  ".join(problems))
