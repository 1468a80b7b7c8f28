#!/usr/bin/env bash
# Installs what the dashboard's browser tests (tests/browser) need: Debian's
# Chromium and Node.js, and the npm packages pinned by
# scripts/browser-tests/package-lock.json. puppeteer-core drives the system
# Chromium; it never downloads a browser of its own. Idempotent.
set -euo pipefail
cd "$(dirname "$0")"

packages=(chromium nodejs)
# npm comes with some builds of nodejs; Debian's own is a package of its own.
command -v npm >/dev/null || packages+=(npm)
./install-deps.sh "${packages[@]}"

lock=browser-tests/package-lock.json
stamp=browser-tests/node_modules/.package-lock.json
if [[ ! -f "$stamp" || "$lock" -nt "$stamp" ]]; then
  PUPPETEER_SKIP_DOWNLOAD=1 npm ci --prefix browser-tests --no-audit --no-fund --loglevel=error
fi
