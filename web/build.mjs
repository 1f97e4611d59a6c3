// Builds the page into a folder (default ../build-wasm/site): the page's code bundled with three.js,
// and the module's package (built by `make wasm`) beside it in zando/.
import { build } from 'esbuild';
import { cpSync, mkdirSync, rmSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const out = resolve(process.argv[2] ?? join(here, '..', 'build-wasm', 'site'));
const packageDir = resolve(process.argv[3] ?? join(here, '..', 'build-wasm', 'package'));
rmSync(out, { recursive: true, force: true });
mkdirSync(out, { recursive: true });
await build({
  entryPoints: [join(here, 'src', 'app.js')],
  outfile: join(out, 'app.js'),
  bundle: true,
  format: 'esm',
  target: 'es2022',
  minify: true,
  external: ['./zando/zando.js'],
  logLevel: 'warning',
});
cpSync(join(here, 'index.html'), join(out, 'index.html'));
cpSync(join(here, 'src', 'style.css'), join(out, 'style.css'));
cpSync(packageDir, join(out, 'zando'), { recursive: true });
console.log(`page built in ${out}`);
