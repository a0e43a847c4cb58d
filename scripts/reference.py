#!/usr/bin/env python3
"""Makes the reference from the comments of the public headers, as they are, with Doxygen, and that of
the Java classes with Javadoc. Fails when an exported name has no comment.

    reference.py TREE FOLDER VERSION DOXYGEN [JAVADOC]

A header's first comment is about the header. A comment in front of a declaration is about it, and
about those below it up to the next blank line; a comment behind code is about that member. A comment
between blank lines introduces the declarations after it, and its first sentence is their title.
"""
import pathlib
import re
import shutil
import subprocess
import sys

SETTINGS = """
PROJECT_NAME = kxutil
PROJECT_BRIEF = "Utility library of the Kestrum virtual machine"
INPUT = source
RECURSIVE = YES
FILE_PATTERNS = *.h *.md
USE_MDFILE_AS_MAINPAGE = index.md
STRIP_FROM_PATH = source
OPTIMIZE_OUTPUT_FOR_C = YES
TYPEDEF_HIDES_STRUCT = YES
JAVADOC_AUTOBRIEF = YES
EXTRACT_STATIC = YES
SORT_MEMBER_DOCS = NO
MACRO_EXPANSION = YES
EXPAND_ONLY_PREDEF = YES
PREDEFINED = __attribute__(x)= LOG_UNSIGNED_ENUM= JNIEXPORT= JNICALL= KX_EXPORTED_INLINE= __cplusplus
SEARCH_INCLUDES = NO
SHOW_INCLUDE_FILES = NO
VERBATIM_HEADERS = NO
SEARCHENGINE = NO
HTML_TIMESTAMP = NO
GENERATE_LATEX = NO
GENERATE_TAGFILE = names.tag
HAVE_DOT = NO
QUIET = YES
WARN_IF_UNDOCUMENTED = NO
WARN_IF_INCOMPLETE_DOC = NO
WARN_AS_ERROR = FAIL_ON_WARNINGS
"""


def escaped(text):
    """Text that means itself to Doxygen; what stands in quotes or backticks does already."""
    return re.sub(r'("[^"]*"|`[^`]*`)|([\\<>@%#&*|])', lambda m: m[1] or "\\" + m[2], text)


def sentence(comment, end):
    text = " ".join(comment[:comment.index("")] if "" in comment else comment)
    return re.match(rf".*?(?:[{end}](?= |$)|$)", text)[0]


def documentation(comment, of_function):
    """The comment in Doxygen's terms. A line of two columns is a parameter, or an item of a list."""
    lines, in_item = [], False
    for line in comment:
        item = re.match(r"  (\S+(?: \S+)*)  +(\S.*)", line)
        in_item = bool(item) or in_item and line.startswith(" ")
        if item and of_function and re.fullmatch(r"\w+(, \w+)*", item[1]):
            line = f"@param {item[1].replace(' ', '')} {escaped(item[2])}"
        elif item:
            line = f"- `{item[1]}`: {escaped(item[2])}"
        elif in_item:
            line = "  " + escaped(line.strip())
        elif not line.startswith("    "):
            line = escaped(line)
        lines.append(line)
    return lines


def convert(path, source):
    """The source with Doxygen's comments, and the header's part of the index."""
    out, rows, comment, about = [], [], [], []
    heading = ended = in_section = False

    def put(lines):
        out.extend(f"/// {line}".rstrip() for line in lines)

    for line in source.splitlines():
        text = re.match(r" *//(?: (.*))?$", line)
        if text:
            comment.append(text[1] or "")
            continue
        macro = re.match(r"#define (\w+)", line)
        if comment and not heading:
            put(["@file", *documentation(comment, False)])
            heading = f"## {sentence(comment, '.:;')[:-1]}"
        elif comment and not line:
            title = sentence(comment, ".")
            rest = comment.index("") if "" in comment else len(comment)
            body = [" ".join(comment[:rest])[len(title):].strip(), *comment[rest:]]
            put(["@}"] * in_section + [f"@name {title[:-1]}", *documentation(body, False), "@{"])
            in_section = True
        elif macro and f"#undef {macro[1]}\n" in source:
            pass
        elif line.startswith("#") and not macro:
            put(["@}"] * in_section)
            in_section = False
        elif comment or (about and ended and re.match(r"\w", line)):
            about = comment or about
            put(documentation(about, not line.startswith(("#", "typedef"))))
            code = re.sub(r'__attribute__\(\(.*?\)\)+ |extern "C" ', "", line)
            name = re.match(r"(?!typedef|struct|class)(?:#define )?[\w* ]*?(\w+)([(;])", code)
            if name:
                rows.append(f"| {name[1]}{'()' * (name[2] == '(')} | {escaped(sentence(about, '.'))} |")
        about = about if line else []
        comment, ended = [], re.search(r";( +//.*)?$", line)
        out.append(re.sub(r"(\S) +// ", r"\1  ///< ", line))
    link = f'@ref {path} "{path}"'
    table = ["| name | what |", "|---|---|", *dict.fromkeys(rows)]
    return "\n".join(out), ["", heading, "", link, "", *table] if rows else []


def natives(tree):
    """A header of the functions that the virtual machine finds by their names."""
    found = [declaration for path in sorted(tree.glob("src/util/c/shared/**/*.cpp"))
             for declaration in re.findall(r"(?:^//.*\n)*^[^\n/]*JNIEXPORT[^{]*", path.read_text(), re.M)]
    return "\n\n".join(["// Natives of the Java classes.", *(text.rstrip() + ";" for text in found)])


def main(tree, folder, version, doxygen, javadoc=None):
    tree, folder = pathlib.Path(tree).resolve(), pathlib.Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    sources = {path.relative_to(tree / "src"): path.read_text() for layer in ("util", "osal")
               for path in sorted(tree.glob(f"src/{layer}/export/**/*.h"))}
    sources[pathlib.Path("natives.h")] = natives(tree)
    index = [f"# Reference {version}", "", "Every function by facility, in the order of its header."]
    for path, source in sources.items():
        target = folder / "source" / path
        target.parent.mkdir(parents=True, exist_ok=True)
        text, part = convert(path, source)
        target.write_text(text + "\n")
        index += part
    if javadoc:
        index += ["", '## Java classes', "", '<a href="java/index.html">Their own reference</a>']
    index = "\n".join(index) + "\n"
    (folder / "source/index.md").write_text(index)
    subprocess.run([doxygen, "-"], input=SETTINGS, text=True, cwd=folder, check=True)

    documented = re.findall(r"<name>(\w+)</name>", (folder / "names.tag").read_text())
    exported = [name for library in ("kxutil", "kxosal")
                for name in re.findall(r"(\w+);", (tree / f"cmake/{library}.map").read_text())]
    missing = {name for name in exported if name not in documented or not re.search(rf"^\| {name}\W", index, re.M)}
    if missing:
        sys.exit(f"exported, but not documented: {' '.join(sorted(missing))}")
    if javadoc:
        subprocess.run([javadoc, "-quiet", "-notimestamp", "-noindex", "-Xdoclint:all", "-Werror", "-encoding", "UTF-8",
                        "-d", folder / "html/java", *tree.glob("src/util/java*/**/*.java")], check=True)
    print(f"{len(exported)} exported names, {folder}/html/index.html")


main(*sys.argv[1:])
