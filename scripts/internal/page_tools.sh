# Sourced: install_page_tools puts what checks the page (tests/page/package.json) into build/page-tools, once for each state
# of its lock file. Fails, with a line that says so, where npm or the network is missing.
page_tools=build/page-tools
install_page_tools() {
  if cmp -s tests/page/package-lock.json "$page_tools/installed.json"; then
    return 0
  fi
  command -v npm > /dev/null || { echo "The page's tools are missing: npm is not installed."; return 1; }
  mkdir -p "$page_tools"
  cp tests/page/package.json tests/page/package-lock.json "$page_tools"
  if ! npm --prefix "$page_tools" ci --silent --no-audit --no-fund --ignore-scripts > "$page_tools/npm.log" 2>&1; then
    echo "The page's tools are missing: npm could not install them ($page_tools/npm.log)."
    return 1
  fi
  cp tests/page/package-lock.json "$page_tools/installed.json"
}
