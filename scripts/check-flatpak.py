"""Checks that Flatpak manifests have the keys and permissions that flatpak-builder knows:
scripts/check-flatpak.py FILE…"""

import re
import sys

import yaml

REQUIRED = {"id", "runtime", "runtime-version", "sdk", "command", "modules"}
KNOWN = REQUIRED | {"finish-args", "cleanup", "build-options"}
OF_MODULES = {"name", "buildsystem", "config-opts", "build-options", "post-install", "cleanup",
              "sources"}
OF_SOURCES = {"type", "url", "tag", "commit", "sha256", "path", "skip"}
NAME = r"[\w-]+(\.[\w-]+)+(\.\*)?"
PERMISSION = re.compile(
    r"--(socket=(wayland|x11|fallback-x11|pulseaudio)|share=(ipc|network)|device=(dri|input|all)"
    rf"|(system-)?talk-name={NAME})")


def problems(manifest):
    yield from (f"lacks {key}" for key in REQUIRED - manifest.keys())
    yield from (f"unknown key {key}" for key in manifest.keys() - KNOWN)
    yield from (f"unknown permission {word}" for word in manifest.get("finish-args", [])
                if not PERMISSION.fullmatch(word))
    for module in manifest.get("modules", []):
        yield from (f"unknown key {key} of a module" for key in module.keys() - OF_MODULES)
        for source in module["sources"]:
            yield from (f"unknown key {key} of a source" for key in source.keys() - OF_SOURCES)


failed = False
for path in sys.argv[1:]:
    with open(path, encoding="utf-8") as file:
        for problem in problems(yaml.safe_load(file)):
            print(f"{path}: {problem}", file=sys.stderr)
            failed = True
sys.exit(failed)
