// Bundles the page's code and styles: node build.mjs OUTPUT_DIRECTORY
import {build} from "esbuild";

await build({
  entryPoints: {page: "src/main.tsx"},
  bundle: true,
  minify: true,
  format: "iife",
  target: ["chrome109", "firefox115", "safari16"],
  jsx: "automatic",
  jsxImportSource: "preact",
  legalComments: "inline",
  charset: "utf8",
  absWorkingDir: import.meta.dirname,
  outdir: process.argv[2],
  logLevel: "warning",
});
