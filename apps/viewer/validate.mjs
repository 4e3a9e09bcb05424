// node validate.mjs FILE.glb ...: errors and warnings of the Khronos validator; status 1 if there is an error.
import { readFileSync } from "node:fs";
import validator from "gltf-validator";

let status = 0;
for (const file of process.argv.slice(2)) {
    const { issues } = await validator.validateBytes(new Uint8Array(readFileSync(file)), { maxIssues: 1000 });
    console.log(`${file}: ${issues.numErrors} errors, ${issues.numWarnings} warnings`);
    for (const issue of issues.messages.filter((message) => message.severity < 2).slice(0, 10)) {
        console.log(`  ${issue.code} at ${issue.pointer}: ${issue.message}`);
    }
    if (issues.numErrors > 0) status = 1;
}
process.exit(status);
