// Puts the page, its style and the bundled script together: dist/viewer.html, with a mark where the level goes.
import { build } from "esbuild";
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";

const bundle = await build({
    entryPoints: ["src/main.js"],
    bundle: true,
    minify: true,
    format: "iife",
    target: "es2020",
    legalComments: "inline",
    write: false,
});
// The end tag of a script must not stand within it.
const script = bundle.outputFiles[0].text.replaceAll("</script", "<\\/script");
const page = readFileSync("src/page.html", "utf8")
    .replace("/*STYLE*/", () => readFileSync("src/style.css", "utf8"))
    .replace("/*SCRIPT*/", () => script);
mkdirSync("dist", { recursive: true });
writeFileSync("dist/viewer.html", page);
console.log(`dist/viewer.html: ${page.length} bytes`);
