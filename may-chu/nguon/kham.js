// For a container's health check: ends with 0 when the server with the same settings says that it is well.
import { get } from 'node:http';
import { get as getHttps } from 'node:https';
import { docCaiDat } from './cai-dat.js';

const { cong, diaChi, chungChi } = docCaiDat([], process.env);
if (cong.so === 0 || cong.duPhong) {
  process.stderr.write('CONG has to be one fixed port: where the server listens instead cannot be known\n');
  process.exit(2);
}
// The certificate is made for the public name, which the loopback address is not.
const hoi = chungChi ? (cach, tra) => getHttps({ ...cach, rejectUnauthorized: false }, tra) : get;
hoi({ host: diaChi || 'localhost', port: cong.so, path: '/suc-khoe', timeout: 4000 }, (tra) => process.exit(tra.statusCode === 200 ? 0 : 1))
  .on('timeout', () => process.exit(1))
  .on('error', () => process.exit(1));
